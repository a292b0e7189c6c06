#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/file.h"
#include "platform/system_error.h"

// Operations on single files by name. Names as in platform/file.h.
namespace platform {

/// Copies the content of a file, its permissions (Windows: its attributes) and its times of
/// access (Linux) and change. An existing target is replaced in place, or with `failIfExists` is
/// is_already_exists(). A copy that breaks off midway leaves no target; one that is refused leaves
/// an existing target as it was. On Linux: only regular files are copied; a file onto itself is
/// is_sharing_violation(); the share modes of open streams hold; the set-user-id and set-group-id
/// bits are dropped; the file system copies by itself, or shares the blocks, where it can;
/// permissions and times are kept as far as the target's owner and file system allow.
SystemError copy_file(const std::string& source, const std::string& target, bool failIfExists);

/// Success, or the step at which the change of times failed.
struct TimesChange {
    bool opened = false;
    SystemError error;
};

/// Stands for the largest time of all.
inline constexpr std::int64_t largest_time = INT64_MAX;

/// Sets the times of last access and last change of a file or a directory, in nanoseconds since
/// 1970-01-01 UTC; a null pointer leaves one as it is. Links are followed. `largest_time` sets the
/// largest time of the system on Windows; on Linux the largest number of nanoseconds, in 2262.
TimesChange set_file_times(const std::string& path, const std::int64_t* accessed,
                           const std::int64_t* modified);

/// Length in bytes of a file, links followed, by the runtime library: a failure is an `errno` also
/// on Windows.
Result<std::uint64_t> file_size_by_name(const std::string& path);

/// Opens a file for path_of_file(); a link is followed, a directory refused.
Result<FileHandle> open_link_target(const std::string& path);

struct FilePath {
    std::string path;       ///< empty on failure, and for an empty file
    std::size_t length = 0; ///< of the path; if that is at or above the capacity, what it needs
    SystemError error;      ///< success for an empty file
};

/// The full path, free of links, of an open file. Required: an empty file has none. On Windows,
/// required as well: a file that cannot be mapped counts as empty.
FilePath path_of_file(FileHandle file, std::size_t capacity);

} // namespace platform
