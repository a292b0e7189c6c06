#pragma once

#include <cstdio>
#include <string>

#include "platform/system_error.h"

// Names are UTF-8 on Windows and plain bytes on Linux; what stands behind an embedded zero is not
// seen.
namespace platform {

/// True when something of that name can be seen.
bool exists(const std::string& path);

/// Creates one directory; is_already_exists() when something of that name is there.
SystemError create_directory(const std::string& path);

/// True when the path names a directory, or a link to one.
bool is_directory(const std::string& path);

/// Success when the name exists; else why not.
SystemError check_existence(const std::string& path);

/// Success when this process may read and write what the name stands for; else why not.
SystemError check_read_write_access(const std::string& path);

/// Opens for writing and closes at once, shared with readers and writers. A missing file is made,
/// empty, and stays. is_sharing_violation() when another opener denies it.
SystemError probe_write_access(const std::string& path);

/// Removes a file if it can. May be called by a handler of signals.
void remove_file(const char* path) noexcept;

/// Lets others remove or rename a file while it is open in this stream, as Linux always does.
void allow_removal(std::FILE* file) noexcept;

} // namespace platform
