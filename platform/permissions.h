#pragma once

#include <string>

#include "platform/system_error.h"

// Permissions of files that are not open.
namespace platform {

/// Succeeds if this process may read the named file.
SystemError check_read_access(const std::string& path);

/// True when every account may change the file, or add and remove names in the directory: on Linux
/// the write bit of others, unless a directory is sticky. False on Windows, where access lists say
/// who may what.
bool is_writable_for_all(const std::string& path);

} // namespace platform
