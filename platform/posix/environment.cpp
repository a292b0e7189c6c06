#include "platform/environment.h"

#include <cstdlib>

namespace platform {

std::optional<std::string> environment_variable(const char* name) {
    const char* value = ::secure_getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::string> environment_text(const char* name) {
    return environment_variable(name);
}

std::optional<std::string> user_profile_directory() {
    auto profile = environment_variable("USERPROFILE");
    return profile ? profile : environment_variable("HOME");
}

} // namespace platform
