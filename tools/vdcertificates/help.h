#pragma once

#include <string>

#include "tools/vdcertificates/command_line.h"

namespace tool {

/// Returns the text that --help prints.
std::string program_help();
std::string command_help(const Command& command);

} // namespace tool
