#include "platform/system_error.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

namespace platform {
namespace {

// Windows numbers, from the system's list of error codes.
constexpr std::array<unsigned long, 2> windows_not_found{2, 3};
constexpr std::array<unsigned long, 1> windows_access_denied{5};
constexpr std::array<unsigned long, 2> windows_already_exists{80, 183};
constexpr std::array<unsigned long, 1> windows_sharing_violation{32};

constexpr std::array<unsigned long, 2> posix_not_found{ENOENT, ENOTDIR};
constexpr std::array<unsigned long, 2> posix_access_denied{EACCES, EPERM};
constexpr std::array<unsigned long, 1> posix_already_exists{EEXIST};
constexpr std::array<unsigned long, 1> posix_sharing_violation{EBUSY};

template <class Windows, class Posix>
bool is_one_of(const SystemError& error, const Windows& windows, const Posix& posix) noexcept {
    const auto holds = [&](const auto& numbers) {
        return std::find(numbers.begin(), numbers.end(), error.number()) != numbers.end();
    };
    switch (error.domain()) {
    case SystemError::Domain::windows:
        return holds(windows);
    case SystemError::Domain::posix:
        return holds(posix);
    case SystemError::Domain::none:
        break;
    }
    return false;
}

} // namespace

bool SystemError::is_not_found() const noexcept {
    return is_one_of(*this, windows_not_found, posix_not_found);
}

bool SystemError::is_access_denied() const noexcept {
    return is_one_of(*this, windows_access_denied, posix_access_denied);
}

bool SystemError::is_already_exists() const noexcept {
    return is_one_of(*this, windows_already_exists, posix_already_exists);
}

bool SystemError::is_sharing_violation() const noexcept {
    return is_one_of(*this, windows_sharing_violation, posix_sharing_violation);
}

std::string describe(SystemError error) {
    switch (error.domain()) {
    case SystemError::Domain::posix:
        return std::generic_category().message(static_cast<int>(error.number()));
    case SystemError::Domain::windows:
        return describe_windows_error(error.number());
    case SystemError::Domain::none:
        break;
    }
    return "Success";
}

} // namespace platform
