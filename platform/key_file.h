#pragma once

#include <string>

#include "platform/file.h"
#include "platform/system_error.h"

// The two files of the machine's key pair. Names as in platform/file.h.
namespace platform {

/// Opens a key file for reading and writing; other openers may read it. Creates a missing file,
/// which only its owner may open (Linux: mode 0600 regardless of the umask, or 0640 with the group
/// of the directory if that has the set-group-id bit). An existing file keeps its content, owner
/// and permissions. Fails if the file cannot be opened for both, or is not a regular file, and
/// removes a file that it created.
Result<FileHandle> open_key_file(const std::string& path);

/// Clears or sets the read-only state of a key file: the read-only attribute on Windows; on Linux
/// sets the owner's write bit, or clears all write bits. No other permission changes.
SystemError set_key_file_writable(const std::string& path, bool writable);

/// True if accounts that are neither the file's owner nor in its group have any permission on it.
/// Always false on Windows, where access lists govern this.
bool is_open_to_others(const std::string& path);

} // namespace platform
