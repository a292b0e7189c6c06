#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace support {

/// Sets (or with no value removes) an environment variable of this process, for its children too.
void set_variable(const std::string& name, const std::optional<std::string>& value);

/// Sets (or with no value removes) an environment variable while it lives.
class EnvironmentGuard {
  public:
    EnvironmentGuard(std::string name, const std::optional<std::string>& value)
        : name_(std::move(name)) {
        if (const char* const before = std::getenv(name_.c_str())) {
            before_ = before;
        }
        set_variable(name_, value);
    }
    EnvironmentGuard(const EnvironmentGuard&) = delete;
    EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;
    ~EnvironmentGuard() { set_variable(name_, before_); }

  private:
    std::string name_;
    std::optional<std::string> before_;
};

} // namespace support
