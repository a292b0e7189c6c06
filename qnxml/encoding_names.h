#pragma once

#include <cstddef>

namespace qnxml {

/// Compares two names of encodings loosely: ignores the case of letters, everything but letters and
/// digits, and the zeros that start a number. "UTF-8" equals "utf_08". Not an equivalence relation:
/// "utf10" equals "utf1", because a zero after a digit that is the same in both names counts as one
/// that starts a number (required).
bool encoding_names_equal(const char* first, std::size_t firstSize, const char* second,
                          std::size_t secondSize) noexcept;

} // namespace qnxml
