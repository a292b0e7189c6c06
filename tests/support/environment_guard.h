#pragma once

#include <string>
#include <utility>

#include "platform/environment.h"
#include "platform/testing/testing.h"

namespace support {

/// Sets (or with no value removes) an environment variable while it lives, for child processes too.
class EnvironmentGuard {
  public:
    EnvironmentGuard(std::string name, const std::optional<std::string>& value)
        : name_(std::move(name))
        , before_(platform::environment_variable(name_.c_str())) {
        platform::testing::set_environment_variable(name_.c_str(), value);
    }
    EnvironmentGuard(const EnvironmentGuard&) = delete;
    EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;
    ~EnvironmentGuard() { platform::testing::set_environment_variable(name_.c_str(), before_); }

  private:
    std::string name_;
    std::optional<std::string> before_;
};

} // namespace support
