#include "platform/path.h"

namespace platform {

const char preferred_separator = '/';
const bool names_are_utf8 = false;

bool is_separator(char character) noexcept {
    return character == '/';
}

} // namespace platform
