#pragma once

#include "platform/system_error.h"
#include "platform/win32/windows.h"

namespace platform {

/// Returns GetLastError() as an error.
inline SystemError last_error() noexcept {
    return SystemError::windows(::GetLastError());
}

} // namespace platform
