#pragma once

#include <optional>
#include <string>

#include "platform/system_error.h"

namespace platform {

/// Returns the computer's name in UTF-8: GetComputerNameW on Windows, the untruncated gethostname()
/// on Linux. It is never empty.
Result<std::string> computer_name();

/// Returns the machine-wide root directory in UTF-8, which may be empty: on Windows the value
/// "Path" of the registry key, on Linux the first line `Path=...` of the configuration file.
/// Returns nullopt if there is no such key, value, file or line; every other failure is an error.
Result<std::optional<std::string>> machine_root_directory();

/// Returns the place of that setting: the registry key, or the name of the file.
std::string machine_setting_source();

} // namespace platform
