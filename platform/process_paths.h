#pragma once

#include <cstddef>
#include <string>

#include "platform/system_error.h"

// The paths that belong to this process.
namespace platform {

/// Changes the current directory of the process.
SystemError set_current_directory(const std::string& path);

/// Returns the current directory, of any length. `bufferSize` receives the size of the last buffer
/// tried, in characters, also on failure.
Result<std::string> current_directory(std::size_t& bufferSize);

/// Returns the current directory; on Windows as the runtime library reports it, with at most 2048
/// characters and an `errno` on failure.
Result<std::string> runtime_current_directory();

/// Returns the path of the program that this process runs.
Result<std::string> application_path();

/// Returns the directory for temporary files, or an empty text if it is unknown.
std::string temporary_directory();

} // namespace platform
