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

/// Identifies a directory regardless of its path.
struct DirectoryIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0;

    friend bool operator==(const DirectoryIdentity&, const DirectoryIdentity&) = default;
};

/// Reads the entries of one directory in the system's order, including "." and "..", one at a time.
class DirectoryReader {
  public:
    DirectoryReader() noexcept;
    DirectoryReader(const DirectoryReader&) = delete;
    DirectoryReader& operator=(const DirectoryReader&) = delete;
    ~DirectoryReader();

    /// Opens a directory, whose path ends in a separator, and moves to its first entry. Call it
    /// once. If `parent` is not null, its current entry is this directory: on Linux the directory
    /// is opened through it, so the path may be longer than the system's limit. Returns false if
    /// there are no entries.
    Result<bool> open(const std::string& path, const DirectoryReader* parent);

    /// Moves to the next entry. Returns false if there is none. On Linux fails also if the kind of
    /// a symbolic link's target cannot be determined.
    Result<bool> next();

    /// Closes the system's handle. The reader is closed afterwards even if this fails.
    SystemError close();

    bool is_open() const noexcept { return state_ != nullptr; }

    /// The system's handle, for messages. May be called on a closed reader.
    const void* handle() const noexcept;

    // Only for an open reader.

    /// Identifies the directory; nullopt on Windows and on failure.
    std::optional<DirectoryIdentity> identity() const noexcept;

    // The current entry. The views are valid until the reader moves.

    /// UTF-8 on Windows, any bytes on Linux.
    std::string_view name() const noexcept;
    std::basic_string_view<NameUnit> native_name() const noexcept;
    /// A directory, or a link to one.
    bool is_directory() const noexcept;
    bool is_link() const noexcept;
    /// The status of the entry. If the entry has been removed or access is denied, size and times
    /// are zero; the type is right.
    FileStatus status() const;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

} // namespace platform
