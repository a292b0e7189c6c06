#pragma once

#include <string>

#include "platform/system_error.h"

// Who may do what with a file that is not opened.
namespace platform {

/// Success when this process may read what the name stands for; else why not.
SystemError check_read_access(const std::string& path);

/// True when every account may change the file, or add and remove names in the directory: on Linux
/// the write bit of others, unless a directory is sticky. False on Windows, where access lists say
/// who may what.
Result<bool> is_writable_for_all(const std::string& path);

} // namespace platform
