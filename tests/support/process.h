#pragma once

#include <cstdio>
#include <string>
#include <vector>

namespace support {

/// First argument of a test program that is to run a child function, named by the second one.
inline constexpr const char* child_argument = "--run-child";

/// Runs a registered function and gives the exit status.
int run_child(const std::string& function, const std::vector<std::string>& arguments);

/// The next line without its end; empty at the end of the stream.
std::string read_line(std::FILE* stream);

} // namespace support
