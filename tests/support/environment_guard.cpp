#include "tests/support/environment_guard.h"

#include <cstdlib>

namespace support {
namespace {

void set(const std::string& name, const std::optional<std::string>& value) {
    if (value) {
        ::setenv(name.c_str(), value->c_str(), 1);
    } else {
        ::unsetenv(name.c_str());
    }
}

} // namespace

EnvironmentGuard::EnvironmentGuard(std::string name, const std::optional<std::string>& value)
    : name_(std::move(name)) {
    if (const char* before = std::getenv(name_.c_str())) {
        before_ = before;
    }
    set(name_, value);
}

EnvironmentGuard::~EnvironmentGuard() {
    set(name_, before_);
}

} // namespace support
