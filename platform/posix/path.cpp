#include "platform/path.h"

namespace platform {

const char preferred_separator = '/';

bool is_separator(char character) noexcept {
    return character == '/';
}

} // namespace platform
