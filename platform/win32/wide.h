#pragma once

#include <string>
#include <string_view>

namespace platform {

/// UTF-16 of a UTF-8 text. What is no UTF-8 gives the empty text: as a name the system finds that
/// nowhere.
std::wstring wide(std::string_view text);

/// UTF-8 of a UTF-16 text; a lone surrogate becomes U+FFFD.
std::string narrow(std::wstring_view text);

} // namespace platform
