#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/file_status.h"
#include "platform/path.h"
#include "platform/system_error.h"

namespace platform {

/// Reads the entries of one directory in the system's order, "." and ".." among them. It stands on
/// one entry at a time and keeps nothing of those that it has passed.
class DirectoryReader {
  public:
    DirectoryReader() noexcept;
    DirectoryReader(const DirectoryReader&) = delete;
    DirectoryReader& operator=(const DirectoryReader&) = delete;
    ~DirectoryReader();

    /// Opens a directory, whose path ends in a separator, and steps on its first entry; to be
    /// called once. `parent` may be null; else it is a reader that stands on this directory in the
    /// directory above, and outlives this reader. False when there is nothing to read: no entries
    /// at all, or (Linux) a link that leads back to a directory which a parent reads.
    Result<bool> open(const std::string& path, const DirectoryReader* parent);

    /// Steps on the next entry; false when there is none.
    Result<bool> next();

    /// Gives the system's handle back. The reader is closed afterwards, whatever comes out.
    SystemError close();

    bool is_open() const noexcept { return state_ != nullptr; }

    /// The system's handle, to be shown in messages.
    const void* handle() const noexcept;

    // Of the entry that the reader stands on; the views hold until it moves.

    /// UTF-8 on Windows, plain bytes on Linux.
    std::string_view name() const noexcept { return name_; }
    std::basic_string_view<NameUnit> native_name() const noexcept;
    /// A directory, or a link to one.
    bool is_directory() const noexcept { return is_directory_; }
    /// All about the entry. What the system no longer tells, because the entry is gone or may not
    /// be looked at, is zero; the type bits hold even so.
    FileStatus status() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
    std::string_view name_;
    bool is_directory_ = false;
};

} // namespace platform
