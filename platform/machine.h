#pragma once

#include <optional>
#include <string>

namespace platform {

/// The computer's name, UTF-8: GetComputerNameW on Windows, the whole of gethostname on Linux.
std::string computer_name();

/// The machine-wide root directory, UTF-8, or nothing when none is set: on Windows the value
/// "Path" of the registry key, on Linux the line `Path=...` of the configuration file. May be
/// empty.
std::optional<std::string> machine_root_directory();

/// Where the machine keeps that setting: the registry key, or the name of the file.
std::string machine_setting_source();

} // namespace platform
