#pragma once

#include <string>

#include "platform/system_error.h"

namespace platform {

/// Returns the path of a named mutex's lock file, in the first of these directories that is sticky
/// and writable for every account: /run/lock, /var/tmp, /tmp.
Result<std::string> lock_file_path(const std::string& mutexName);

/// Returns the highest descriptor by which this process holds a named mutex, or -1.
int highest_lock_descriptor();

} // namespace platform
