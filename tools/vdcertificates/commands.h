#pragma once

#include "tools/vdcertificates/command_line.h"

namespace tool {

// The functions that run the commands. They throw UsageError, Failure and what the library throws.

ExitStatus run_set(const Arguments& arguments);
ExitStatus run_update(const Arguments& arguments);
ExitStatus run_remove(const Arguments& arguments);
ExitStatus run_get(const Arguments& arguments);
ExitStatus run_list(const Arguments& arguments);
ExitStatus run_where(const Arguments& arguments);
ExitStatus run_check(const Arguments& arguments);
ExitStatus run_restore(const Arguments& arguments);
ExitStatus run_export(const Arguments& arguments);
ExitStatus run_import(const Arguments& arguments);
ExitStatus run_completion(const Arguments& arguments);

} // namespace tool
