#pragma once

#include <string>
#include <sys/types.h>

#include "platform/system_error.h"

namespace platform {

/// Opens a regular file or a character device with the flags of open(), close-on-exec and without
/// waiting; anything else is refused. The descriptor lies above those of the named mutexes that
/// this process holds: the kernel closes the files of a dead process from the highest down, so
/// their share locks are gone before the mutex is.
Result<int> open_admissible(const std::string& path, int flags);

/// Creates an empty file that has its mode, regardless of the umask, when others first see it.
/// is_already_exists() if the name is taken; a failure leaves no file behind.
SystemError create_with_mode(const std::string& path, mode_t mode);

/// Opens, for writing and for its owner alone, a file that has no name yet and that no end of the
/// process leaves behind, in the directory of `path`. Returns -1 where there are no such files, or
/// where they could not be named.
int open_nameless(const std::string& path);

/// Gives such a file its name; answers as linkat() does.
int give_name(int descriptor, const std::string& path);

/// True if a file's directory has the set-group-id bit, by which accounts share its files.
Result<bool> is_shared_by_group(const std::string& path);

} // namespace platform
