#pragma once

// The end of a run of bytes, sixteen or eight bytes at a time where the processor has SSE2.
//
// The result is that of a look-up of each byte in the set. In the order of signed bytes, which is
// the order of SSE2, the bytes outside a set form a few ranges. The ranges are computed from the
// set at compile time, and a byte is outside the set if and only if it is in one of them. No byte
// past the end is read: fewer than eight bytes, and other processors, use the look-up.
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

inline __m128i sixteen_times(int byte) noexcept {
    return _mm_set1_epi8(static_cast<char>(byte));
}

/// All ones for each byte that is in the range.
template <int first, int last>
__m128i bytes_in_range(__m128i bytes) noexcept {
    if constexpr (first == last) {
        return _mm_cmpeq_epi8(bytes, sixteen_times(first));
    } else if constexpr (first == -128) {
        return _mm_cmplt_epi8(bytes, sixteen_times(last + 1));
    } else if constexpr (last == 127) {
        return _mm_cmpgt_epi8(bytes, sixteen_times(first - 1));
    } else {
        return _mm_and_si128(_mm_cmpgt_epi8(bytes, sixteen_times(first - 1)),
                             _mm_cmplt_epi8(bytes, sixteen_times(last + 1)));
    }
}

template <const ByteSet& set, std::size_t... index>
unsigned int bits_outside(__m128i bytes, std::index_sequence<index...> /*ranges*/) noexcept {
    constexpr SignedRanges ranges = ranges_outside(set);
    return static_cast<unsigned int>(
        _mm_movemask_epi8((bytes_in_range<ranges.first[index], ranges.last[index]>(bytes) | ...)));
}

/// A bit for each of the `width` bytes, 8 or 16, that is not in the set.
template <const ByteSet& set, std::ptrdiff_t width>
unsigned int bits_outside(const char* text) noexcept {
    using Indices = std::make_index_sequence<ranges_outside(set).count>;
    const auto* const block = reinterpret_cast<const __m128i*>(text);
    if constexpr (width == 16) {
        return bits_outside<set>(_mm_loadu_si128(block), Indices());
    } else {
        return bits_outside<set>(_mm_loadl_epi64(block), Indices()) & 0xFF;
    }
}

/// end_of_run() of at least `width` bytes. The last block overlaps the one before.
template <const ByteSet& set, std::ptrdiff_t width>
const char* end_of_run_in_blocks(const char* begin, const char* end) noexcept {
    unsigned int outside = bits_outside<set, width>(begin);
    while (outside == 0 && begin != end - width) {
        begin = end - begin < 2 * width ? end - width : begin + width;
        outside = bits_outside<set, width>(begin);
    }
    return outside != 0 ? begin + std::countr_zero(outside) : end;
}

#endif

/// The first byte that is not in the set, which must not be empty; `end` if there is none.
template <const ByteSet& set>
const char* end_of_run(const char* begin, const char* end) noexcept {
#ifdef __SSE2__
    if (end - begin >= 16) {
        return end_of_run_in_blocks<set, 16>(begin, end);
    }
    if (end - begin >= 8) {
        return end_of_run_in_blocks<set, 8>(begin, end);
    }
#endif
    while (begin != end && set.contains(*begin)) {
        ++begin;
    }
    return begin;
}

} // namespace qnxml::impl
