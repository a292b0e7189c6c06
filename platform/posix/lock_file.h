#pragma once

#include <string>

#include "platform/system_error.h"

namespace platform {

/// Returns the path of a named mutex's lock file, in the first sticky directory of the machine that
/// every account may write: /run/lock, else /var/tmp, else /tmp.
Result<std::string> lock_file_path(const std::string& mutexName);

/// Opens a lock file for reading. A missing one is created with mode 0444 regardless of the umask,
/// so that every account can open it. Anything but a regular file, a link included, is refused.
Result<int> open_lock_file(const std::string& path);

/// Opens an existing lock file; creates none.
Result<int> open_existing_lock_file(const std::string& path);

/// True if the path still names the open file. A failed look is an error.
Result<bool> is_named(int descriptor, const std::string& path);

/// Returns the highest descriptor by which this process holds a named mutex; -1 if it holds none.
int highest_lock_descriptor() noexcept;

} // namespace platform
