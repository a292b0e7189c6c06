#pragma once

#include <string>
#include <string_view>

namespace platform {

/// Converts UTF-8 to UTF-16. Invalid UTF-8 yields the empty text, a name that never exists. Throws
/// std::length_error for texts of 2 GiB or more, as narrow() does.
std::wstring wide(std::string_view text);

/// Converts UTF-16 to UTF-8; a lone surrogate becomes U+FFFD.
std::string narrow(std::wstring_view text);

} // namespace platform
