#include "platform/path.h"

namespace platform {

const char preferred_separator = '/';
const bool names_are_utf8 = false;
const bool paths_have_drives = false;

bool is_separator(char character) noexcept {
    return character == '/';
}

} // namespace platform
