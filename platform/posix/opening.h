#pragma once

#include <string>
#include <sys/types.h>

#include "platform/system_error.h"

namespace platform {

/// Opens a regular file or a character device with the flags of open(), close-on-exec and without
/// waiting; fails for anything else. The descriptor is above those of the named mutexes that this
/// process holds: the kernel closes the files of a dead process from the highest down, so it
/// releases their share locks before the mutex.
Result<int> open_admissible(const std::string& path, int flags);

/// Creates an empty file that has its mode, regardless of the umask, from the moment it is visible.
/// is_already_exists() if the name exists; a failure leaves no file behind.
SystemError create_with_mode(const std::string& path, mode_t mode);

/// Opens a nameless file in the directory of `path` for writing, with mode 0600. It vanishes with
/// the process unless it is named. Returns -1 if the file system has no such files or they cannot
/// be named.
int open_nameless(const std::string& path);

/// Gives such a file its name. Returns what linkat() returns.
int give_name(int descriptor, const std::string& path);

/// True if a file's directory has the set-group-id bit, by which accounts share its files.
Result<bool> is_shared_by_group(const std::string& path);

} // namespace platform
