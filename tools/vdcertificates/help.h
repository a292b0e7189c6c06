#pragma once

#include <string>

#include "tools/vdcertificates/command_line.h"

namespace tool {

/// What --help prints.
std::string program_help();
std::string command_help(const Command& command);

} // namespace tool
