#pragma once

#include <string>

namespace qncore {

/// Checks that the system can take a text as a name. Throws error.qncore.embeddedNul if it contains
/// a zero and, on Windows, error.qncore.encoding if it is invalid UTF-8.
void check_system_name(const std::string& name);

} // namespace qncore
