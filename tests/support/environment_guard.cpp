#include "tests/support/environment_guard.h"

#include <cstdlib>

namespace support {
EnvironmentGuard::EnvironmentGuard(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str())) {
        before_ = before;
    }
    set_variable(name_, value);
}

EnvironmentGuard::~EnvironmentGuard() {
    set_variable(name_, before_);
}

} // namespace support
