#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace support {

/// Another program to run to its end.
struct Command {
    std::string program;
    std::vector<std::string> arguments = {};
    /// Variables that differ from those of this process; nothing removes one.
    std::map<std::string, std::optional<std::string>> environment = {};
    std::string input = {}; ///< its standard input, which ends there
};

struct CommandResult {
    int status = -1; ///< -1 when a signal ended it
    std::string output;
    std::string errors;
};

/// Runs it to its end, and fails the test when it cannot start.
CommandResult run(const Command& command);

} // namespace support
