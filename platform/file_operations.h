#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/file.h"
#include "platform/system_error.h"

// What is done with one file by its name. Names as in platform/file_system.h.
namespace platform {

/// Copies the content of a file, its permissions (Windows: its attributes) and its times of
/// access (Linux) and change. An existing target is replaced in place, or with `failIfExists` is
/// is_already_exists(). A copy that fails leaves no target behind. On Linux: only regular files are
/// copied; a file onto itself is is_sharing_violation(); the share modes of open streams hold;
/// the set-user-id and set-group-id bits stay behind; the file system copies by itself, or shares
/// the blocks, where it can; permissions and times are kept as far as the target's owner and file
/// system allow.
SystemError copy_file(const std::string& source, const std::string& target, bool failIfExists);

/// Success, or at which of two steps the change of times failed.
struct TimesChange {
    bool opened = false;
    SystemError error;
};

/// The time that stands for the largest of all.
inline constexpr std::int64_t largest_time = INT64_MAX;

/// Sets the times of last access and last change of a file or a directory, in nanoseconds since
/// 1970-01-01 UTC; a null pointer leaves one as it is. A link is followed. The largest time is the
/// largest that the system has on Windows; on Linux it is the largest number of nanoseconds, which
/// is in the year 2262.
TimesChange set_file_times(const std::string& path, const std::int64_t* accessed,
                           const std::int64_t* modified);

/// Length in bytes of what a name stands for, links followed, by the runtime library: a failure is
/// an `errno` on Windows, too.
Result<std::uint64_t> file_size_by_name(const std::string& path);

/// Opens a file to ask for its path; a link is followed, a directory refused.
Result<FileHandle> open_link_target(const std::string& path);

struct FilePath {
    std::string path;       ///< empty on failure
    std::size_t length = 0; ///< 0 on failure; above the capacity: what would be needed
    SystemError error;
};

/// The full path, free of links, of an open file. Required: an empty file has none.
FilePath path_of_file(FileHandle file, std::size_t capacity);

} // namespace platform
