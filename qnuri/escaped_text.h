#pragma once

#include <cstddef>
#include <cstdint>

// Texts with %XX escapes whose digits may be of either case.
namespace qnuri {

/// Three-way comparison, by bytes as signed characters and then by length, in which the two bytes
/// after a "%" compare with A to F folded.
int compare_escaped(const char* left, std::size_t leftLength, const char* right,
                    std::size_t rightLength) noexcept;

/// Equal for texts that `compare_escaped` finds equal; 0 for the empty text.
std::uint32_t hash_escaped(const char* text, std::size_t length) noexcept;

} // namespace qnuri
