#pragma once

#include <optional>
#include <string>

namespace platform {

/// Returns the unchanged bytes of an environment variable, or nullopt if it is not set. On Linux a
/// process with another account's privileges (set-user-id) sees no variable.
std::optional<std::string> environment_variable(const char* name);

/// Returns a variable in UTF-8. On Windows this is the Unicode environment, which can hold any
/// text; on Linux it is environment_variable().
std::optional<std::string> environment_text(const char* name);

/// Returns the directory of the user's profile: USERPROFILE; on Linux HOME if that is not set.
std::optional<std::string> user_profile_directory();

} // namespace platform
