#pragma once

#include <cstddef>
#include <string>

#include "platform/system_error.h"

// The paths that belong to this process.
namespace platform {

SystemError set_current_directory(const std::string& path);

/// The current directory as the system gives it, whatever its length. `bufferSize` gets the size
/// of the last buffer that was tried, in characters.
Result<std::string> current_directory(std::size_t& bufferSize);

/// The same; on Windows by the runtime library, whose errors are an `errno`, and which is given
/// 2048 characters.
Result<std::string> runtime_current_directory();

/// The program that this process runs.
Result<std::string> application_path();

/// The directory for temporary files; empty when it cannot be told.
std::string temporary_directory();

} // namespace platform
