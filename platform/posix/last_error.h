#pragma once

#include <cerrno>

#include "platform/system_error.h"

namespace platform {

/// Returns errno as an error.
inline SystemError last_error() noexcept {
    return SystemError::posix(errno);
}

} // namespace platform
