#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/vdcertificates/entry.h"
#include "tools/vdcertificates/output.h"
#include "tools/vdcertificates/password_source.h"
#include "tools/vdcertificates/roles.h"

namespace tool {

enum class Command : std::uint8_t { help, set, get, list, where, check };

/// What the user asks for. Which fields count depends on the command.
struct CommandLine {
    Command command = Command::help;
    std::string help;           ///< what to print for --help and --version
    const Role* role = nullptr; ///< set, get
    Entry entry;                ///< set: all but the password; get: the server
    PasswordSource password_source = PasswordSource::none;
    std::string password_file;
    OutputStyle style;
};

/// Reads and checks the words behind the program's name. Throws UsageError.
CommandLine parse_command_line(std::vector<std::string> words);

} // namespace tool
