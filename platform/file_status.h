#pragma once

#include <cstdint>
#include <string>

#include "platform/system_error.h"

namespace platform {

/// The status of a name; a link is not followed. Times are nanoseconds since 1970-01-01 UTC.
struct FileStatus {
    bool is_directory = false; ///< a directory, or a link to one
    bool is_link = false;      ///< a symbolic link; on Windows any reparse point
    bool is_read_only = false; ///< the attribute; on Linux no account has a write permission
    bool is_hidden = false;    ///< the attribute; on Linux the name begins with a dot
    std::uint64_t size = 0;    ///< bytes
    std::int64_t accessed = 0;
    std::int64_t modified = 0;
    std::int64_t created = 0; ///< if not recorded, the older change of content and status
};

/// Returns the status of a path, which must not end in a separator.
Result<FileStatus> file_status(const std::string& path);

} // namespace platform
