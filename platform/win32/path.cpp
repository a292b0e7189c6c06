#include "platform/path.h"

namespace platform {

const char preferred_separator = '\\';
const bool names_are_utf8 = true;
const bool paths_have_drives = true;

bool is_separator(char character) noexcept {
    return character == '\\' || character == '/';
}

} // namespace platform
