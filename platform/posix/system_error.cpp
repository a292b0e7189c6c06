#include "platform/system_error.h"

#include <cerrno>

namespace platform {

SystemError sharing_violation() noexcept {
    return SystemError::posix(EBUSY);
}

std::string describe_windows_error(unsigned long number) {
    return "Windows error " + std::to_string(number);
}

} // namespace platform
