#pragma once

#include <cstddef>

namespace qnxml {

/// Compares two names of encodings loosely: without regard to the case of letters, to anything but
/// letters and digits, or to the zeros that start a number. "UTF-8" equals "utf_08".
bool encoding_names_equal(const char* first, std::size_t firstSize, const char* second,
                          std::size_t secondSize) noexcept;

} // namespace qnxml
