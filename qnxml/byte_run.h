#pragma once

// The end of a run of bytes, sixteen bytes at a time where the processor has SSE2.
//
// This answers what a look-up of each byte in the set answers. In the order of signed bytes, which
// is the order of SSE2, the bytes outside a set form a few ranges. The ranges are computed from the
// set itself at compile time, and a byte is outside the set if and only if it is in one of them.
// The last bytes, fewer than sixteen, and other processors take the look-up itself, so no byte
// past the end is read.
#include <array>
#include <bit>
#include <cstddef>
#include <utility>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "qnxml/byte_set.h"

namespace qnxml::impl {

#ifdef __SSE2__

/// Ranges of signed bytes, both bounds included.
struct SignedRanges {
    std::array<signed char, 16> first{};
    std::array<signed char, 16> last{};
    std::size_t count = 0;
};

/// The ranges of the bytes that are not in the set.
constexpr SignedRanges ranges_outside(const ByteSet& set) {
    SignedRanges ranges;
    bool inside = true;
    for (int byte = -128; byte < 128; ++byte) {
        const bool was_inside = std::exchange(inside, set.contains(static_cast<char>(byte)));
        if (inside) {
            continue;
        }
        if (was_inside) {
            ranges.first[ranges.count++] = static_cast<signed char>(byte);
        }
        ranges.last[ranges.count - 1] = static_cast<signed char>(byte);
    }
    return ranges;
}

/// All ones for each byte that is in the range.
template <int first, int last>
__m128i bytes_in_range(__m128i bytes) noexcept {
    if constexpr (first == last) {
        return _mm_cmpeq_epi8(bytes, _mm_set1_epi8(first));
    } else if constexpr (first == -128) {
        return _mm_cmplt_epi8(bytes, _mm_set1_epi8(last + 1));
    } else if constexpr (last == 127) {
        return _mm_cmpgt_epi8(bytes, _mm_set1_epi8(first - 1));
    } else {
        return _mm_and_si128(_mm_cmpgt_epi8(bytes, _mm_set1_epi8(first - 1)),
                             _mm_cmplt_epi8(bytes, _mm_set1_epi8(last + 1)));
    }
}

/// A bit for each of the sixteen bytes that is not in the set.
template <const ByteSet& set, std::size_t... index>
unsigned int bits_outside(const char* text, std::index_sequence<index...> /*ranges*/) noexcept {
    constexpr SignedRanges ranges = ranges_outside(set);
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text));
    return static_cast<unsigned int>(_mm_movemask_epi8(
        (bytes_in_range<ranges.first[index], ranges.last[index]>(bytes) | ...)));
}

#endif

/// The first byte that is not in the set; `end` if there is none.
template <const ByteSet& set>
const char* end_of_run(const char* begin, const char* end) noexcept {
#ifdef __SSE2__
    using Ranges = std::make_index_sequence<ranges_outside(set).count>;
    for (; end - begin >= 16; begin += 16) {
        if (const unsigned int outside = bits_outside<set>(begin, Ranges())) {
            return begin + std::countr_zero(outside);
        }
    }
#endif
    while (begin != end && set.contains(*begin)) {
        ++begin;
    }
    return begin;
}

} // namespace qnxml::impl
