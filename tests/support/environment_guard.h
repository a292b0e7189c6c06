#pragma once

#include <optional>
#include <string>

namespace support {

/// Sets (or with no value removes) an environment variable of this process, for its children too.
void set_variable(const std::string& name, const std::optional<std::string>& value);

/// Sets (or with no value removes) an environment variable until the guard goes.
class EnvironmentGuard {
  public:
    EnvironmentGuard(std::string name, const std::optional<std::string>& value);
    EnvironmentGuard(const EnvironmentGuard&) = delete;
    EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;
    ~EnvironmentGuard();

  private:
    std::string name_;
    std::optional<std::string> before_;
};

} // namespace support
