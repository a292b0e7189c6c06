#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/file_status.h"
#include "platform/path.h"
#include "platform/system_error.h"

namespace platform {

/// Which directory it is, whatever name leads to it.
struct DirectoryIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;

    friend bool operator==(const DirectoryIdentity&, const DirectoryIdentity&) = default;
};

/// Reads the entries of one directory in the system's order, "." and ".." included. It holds one
/// entry at a time.
class DirectoryReader {
  public:
    DirectoryReader() noexcept;
    DirectoryReader(const DirectoryReader&) = delete;
    DirectoryReader& operator=(const DirectoryReader&) = delete;
    ~DirectoryReader();

    /// Opens a directory, whose path ends in a separator, and moves to its first entry; call it
    /// once. A `parent` that is not null is at this directory in the directory above: on Linux the
    /// directory is opened through it, so the path may be longer than the system's limit.
    /// False when there are no entries.
    Result<bool> open(const std::string& path, const DirectoryReader* parent);

    /// Moves to the next entry; false when there is none. On Linux it fails also when the system
    /// cannot tell whether a symbolic link leads to a directory.
    Result<bool> next();

    /// Closes the system's handle. The reader is closed afterwards even if this fails.
    SystemError close();

    bool is_open() const noexcept { return state_ != nullptr; }

    // Of an open reader.

    /// The system's handle, to be shown in messages; also of a closed reader.
    const void* handle() const noexcept;
    /// The directory that is read; nothing on Windows, or when the system does not tell.
    std::optional<DirectoryIdentity> identity() const noexcept;

    // Of the current entry; the views hold until the reader moves.

    /// UTF-8 on Windows, plain bytes on Linux.
    std::string_view name() const noexcept;
    std::basic_string_view<NameUnit> native_name() const noexcept;
    /// A directory, or a link to one.
    bool is_directory() const noexcept;
    bool is_link() const noexcept;
    /// All that the system tells about the entry. If it no longer does, because the entry is gone
    /// or access is denied, sizes and times are zero; the type is right even so.
    FileStatus status() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
