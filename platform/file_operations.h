#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/file.h"
#include "platform/system_error.h"

// Operations on single files by name. Names as in platform/file.h.
namespace platform {

/// Copies the content of a file, its permissions (Windows: its attributes) and its times of
/// access (Linux) and change. Replaces an existing target in place, or with `failIfExists` fails
/// with is_already_exists(). A copy that fails midway leaves no target; one that is refused leaves
/// an existing target unchanged.
///
/// On Linux: copies only regular files; a file onto itself is is_sharing_violation(); the share
/// modes of open streams hold; the set-user-id and set-group-id bits are not copied; permissions
/// and times are kept if the target's owner and file system allow it.
SystemError copy_file(const std::string& source, const std::string& target, bool failIfExists);

/// Success, or the error and whether the file could be opened.
struct TimesChange {
    bool opened = false;
    SystemError error;
};

/// Means the largest time possible.
inline constexpr std::int64_t largest_time = INT64_MAX;

/// Sets the times of last access and last change of a file or a directory, in nanoseconds since
/// 1970-01-01 UTC; a null pointer leaves a time unchanged. Follows links. `largest_time` sets the
/// largest time of the system on Windows; on Linux the largest number of nanoseconds, in 2262.
TimesChange set_file_times(const std::string& path, const std::int64_t* accessed,
                           const std::int64_t* modified);

/// Length in bytes of a file. Follows links. A failure is an `errno` also on Windows.
Result<std::uint64_t> file_size_by_name(const std::string& path);

/// Opens a file for path_of_file(). Follows a link; fails for a directory.
Result<FileHandle> open_link_target(const std::string& path);

struct FilePath {
    std::string path;       ///< empty on failure, and for an empty file
    std::size_t length = 0; ///< of the path, or the needed capacity if that is too small
    SystemError error;      ///< success for an empty file
};

/// Returns the full path of an open file, without links. Required: an empty file has no path, nor,
/// on Windows, has a file that cannot be mapped.
FilePath path_of_file(FileHandle file, std::size_t capacity);

} // namespace platform
