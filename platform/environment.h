#pragma once

#include <optional>
#include <string>

namespace platform {

/// The bytes of an environment variable as they stand, or nothing when it is not set. On Linux a
/// process that runs with another's privileges (set-user-id) sees none.
std::optional<std::string> environment_variable(const char* name);

/// The same in UTF-8, which on Windows takes any value of the process's own environment; on Linux
/// the bytes.
std::optional<std::string> environment_text(const char* name);

/// Sets a variable of this process, for this module and all it calls later. The value is UTF-8 on
/// Windows.
void set_environment_variable(const char* name, const std::string& value);

/// The directory of the user's profile: USERPROFILE; on Linux HOME when that is not set.
std::optional<std::string> user_profile_directory();

} // namespace platform
