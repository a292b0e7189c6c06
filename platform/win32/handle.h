#pragma once

#include <utility>

#include "platform/win32/windows.h"

namespace platform {

/// Owns a HANDLE for a scope; both of the system's failure values count as no handle.
class Handle {
  public:
    explicit Handle(HANDLE handle) noexcept
        : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { close(); }

    explicit operator bool() const noexcept { return handle_ != nullptr; }
    HANDLE get() const noexcept { return handle_; }
    /// Gives up ownership without closing the handle.
    HANDLE release() noexcept { return std::exchange(handle_, nullptr); }
    /// Closes the handle now; false when the system reports a failure.
    bool close() noexcept {
        const HANDLE handle = release();
        return handle == nullptr || ::CloseHandle(handle) != 0;
    }

  private:
    HANDLE handle_;
};

} // namespace platform
