#include "platform/system_error.h"

#include <cerrno>
#include <system_error>

namespace platform {

SystemError sharing_violation() noexcept {
    return SystemError::posix(EBUSY);
}

std::string describe(SystemError error) {
    switch (error.domain()) {
    case SystemError::Domain::posix:
        return std::generic_category().message(static_cast<int>(error.number()));
    case SystemError::Domain::windows:
        return "Windows error " + std::to_string(error.number());
    case SystemError::Domain::none:
        break;
    }
    return "Success";
}

} // namespace platform
