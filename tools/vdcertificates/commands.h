#pragma once

#include "tools/vdcertificates/command_line.h"
#include "tools/vdcertificates/exit_status.h"

namespace tool {

// The work of each command. They throw UsageError, Failure and what the library throws.

ExitStatus run_set(CommandLine& line);
ExitStatus run_get(CommandLine& line);
ExitStatus run_list(const CommandLine& line);
ExitStatus run_where();
ExitStatus run_check();

} // namespace tool
