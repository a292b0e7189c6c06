#pragma once

#include <cerrno>

#include "platform/system_error.h"

namespace platform {

/// Returns errno as an error.
inline SystemError last_error() noexcept {
    return SystemError::posix(errno);
}

/// The error of a call that returns 0 on success.
inline SystemError error_of(int answer) noexcept {
    return answer == 0 ? SystemError() : last_error();
}

} // namespace platform
