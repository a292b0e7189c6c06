#include "platform/environment.h"

#include <cstdlib>

#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {

std::optional<std::string> environment_variable(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<std::string> environment_text(const char* name) {
    const std::wstring variable = wide(name);
    std::wstring value;
    for (DWORD size = 256;;) {
        value.resize(size);
        ::SetLastError(ERROR_SUCCESS);
        const DWORD length = ::GetEnvironmentVariableW(variable.c_str(), value.data(), size);
        if (length == 0 && ::GetLastError() != ERROR_SUCCESS) {
            return std::nullopt;
        }
        if (length < size) {
            value.resize(length);
            return narrow(value);
        }
        size = length;
    }
}

std::optional<std::string> user_profile_directory() {
    return environment_variable("USERPROFILE");
}

} // namespace platform
