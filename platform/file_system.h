#pragma once

#include <string>

#include "platform/system_error.h"

// Names are UTF-8 on Windows and any bytes on Linux; they end at an embedded zero.
namespace platform {

/// Creates one directory. Windows reports an existing directory with several errors, among them
/// access denied for the root of a drive.
SystemError create_directory(const std::string& path);

/// True if the path names a directory, or a link to one.
bool is_directory(const std::string& path);

/// Succeeds if the name exists. is_not_found() if it does not; after any other error it may exist.
SystemError check_existence(const std::string& path);

/// Succeeds if this process may read and write the named file.
SystemError check_read_write_access(const std::string& path);

/// On Linux, creates a missing file with mode 0660 if its directory has the set-group-id bit.
/// Otherwise a no-op.
SystemError create_for_group(const std::string& path);

/// Opens a file for writing, shared with readers and writers, and closes it. Creates a missing
/// file: on Linux with the umask, or with mode 0660 if the directory has the set-group-id bit.
/// is_sharing_violation() if another opener denies writing.
SystemError probe_write_access(const std::string& path);

/// Removes a file; ignores failures. Async-signal-safe.
void remove_file(const char* path) noexcept;

} // namespace platform
