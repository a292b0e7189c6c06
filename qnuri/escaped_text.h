#pragma once

#include <cstddef>
#include <cstdint>

/// Texts with %XX escapes whose digits may be of either case.
namespace qnuri {

/// Compares bytes as signed characters, then lengths. A to F count as a to f in the two bytes after
/// a "%". Returns the first difference; the difference of the lengths is cut to 32 bits, so that
/// texts 2 GiB apart in length need a comparison of sizes beside it.
int compare_escaped(const char* left, std::size_t leftLength, const char* right,
                    std::size_t rightLength) noexcept;

/// A hash consistent with `compare_escaped`; 0 for the empty text.
std::uint32_t hash_escaped(const char* text, std::size_t length) noexcept;

} // namespace qnuri
