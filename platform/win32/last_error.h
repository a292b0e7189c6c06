#pragma once

#include <cerrno>

#include "platform/system_error.h"
#include "platform/win32/windows.h"

namespace platform {

/// Returns GetLastError() as an error.
inline SystemError last_error() noexcept {
    return SystemError::windows(::GetLastError());
}

/// The error of a call that returns nonzero on success.
inline SystemError error_of(BOOL done) noexcept {
    return done ? SystemError() : last_error();
}

/// The error of a function of the C runtime that returns 0 on success.
inline SystemError runtime_error_of(int answer) noexcept {
    return answer == 0 ? SystemError() : SystemError::posix(errno);
}

} // namespace platform
