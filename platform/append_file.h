#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "platform/file.h"

namespace platform {

/// A file that several processes append to at the same time, such as a log. Other processes may
/// read, rename and remove it meanwhile; child processes do not inherit it.
class AppendFile {
  public:
    /// Opens or creates a file. Refuses at once what is neither a regular file nor a character
    /// device.
    static Result<AppendFile> open(const std::string& name);

    AppendFile(AppendFile&& other) noexcept
        : file_(std::exchange(other.file_, invalid_file)) {}
    AppendFile& operator=(AppendFile&& other) noexcept {
        std::swap(file_, other.file_);
        return *this;
    }
    ~AppendFile() { close_file(file_); }

    /// Writes the text after whatever the file holds, in one step. Returns the bytes
    /// written: fewer than there are when the device is full, 0 when the call fails.
    std::size_t append(std::string_view text) noexcept;

    /// Length in bytes; 0 when it cannot be had.
    std::uint64_t size() const noexcept;

    /// True when `name` still stands for this file.
    bool is_named(const std::string& name) const;

    /// Locks the file against try_lock() of every other opener until it is closed; false when
    /// another opener holds the lock.
    bool try_lock() noexcept;

  private:
    explicit AppendFile(FileHandle file) noexcept
        : file_(file) {}

    FileHandle file_ = invalid_file;
};

} // namespace platform
