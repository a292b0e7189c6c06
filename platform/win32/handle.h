#pragma once

#include <utility>

#include "platform/file.h"
#include "platform/win32/windows.h"

namespace platform {

inline HANDLE handle_of(FileHandle file) noexcept {
    return reinterpret_cast<HANDLE>(file);
}

/// CreateFileW() without security attributes and template; counts as Call::open.
Result<FileHandle> open_handle(const std::string& name, DWORD access, DWORD shareMode,
                               DWORD disposition, DWORD flags = FILE_ATTRIBUTE_NORMAL);

/// Owns a HANDLE for a scope. Both of the system's failure values count as no handle.
class Handle {
  public:
    explicit Handle(HANDLE handle) noexcept
        : handle_(handle == INVALID_HANDLE_VALUE ? nullptr : handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() { close(); }

    explicit operator bool() const noexcept { return handle_ != nullptr; }
    HANDLE get() const noexcept { return handle_; }
    /// Releases ownership without closing the handle.
    HANDLE release() noexcept { return std::exchange(handle_, nullptr); }
    /// Closes the handle now. Returns false if the system reports a failure.
    bool close() noexcept {
        const HANDLE handle = release();
        return handle == nullptr || ::CloseHandle(handle) != 0;
    }

  private:
    HANDLE handle_;
};

} // namespace platform
