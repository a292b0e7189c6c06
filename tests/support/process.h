#pragma once

#include <string>
#include <vector>

namespace support {

/// First argument of a test program that is to run a child function, named by the second one.
inline constexpr const char* child_argument = "--run-child";

/// Runs a registered function and gives the exit status.
int run_child(const std::string& function, const std::vector<std::string>& arguments);

} // namespace support
