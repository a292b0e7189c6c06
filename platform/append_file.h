#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/file.h"

namespace platform {

/// A file that several processes may append to at the same time, such as a log. Other processes may
/// read, rename and remove it meanwhile; child processes do not inherit it.
class AppendFile {
  public:
    /// Opens or creates a file. Fails at once for anything but a regular file or a character
    /// device.
    static Result<AppendFile> open(const std::string& name);

    AppendFile(AppendFile&& other) noexcept
        : file_(std::exchange(other.file_, invalid_file)) {}
    AppendFile& operator=(AppendFile&& other) noexcept {
        std::swap(file_, other.file_);
        return *this;
    }
    ~AppendFile() { close_file(file_); }

    /// Appends the text in one step. Returns the bytes written: fewer than requested if the device
    /// is full, 0 if the call fails.
    std::size_t append(std::string_view text) noexcept;

    /// Length in bytes; 0 on failure.
    std::uint64_t size() const noexcept;

    /// True if `name` still names this file.
    bool is_named(const std::string& name) const;

    /// Locks the file against try_lock() of every other opener until it is closed. Returns false if
    /// another opener holds the lock.
    bool try_lock() noexcept;

  private:
    explicit AppendFile(FileHandle file) noexcept
        : file_(file) {}

    FileHandle file_ = invalid_file;
};

} // namespace platform
