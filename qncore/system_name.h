#pragma once

#include <string>

namespace qncore {

/// Checks that a text can be passed to the system as a name. Throws error.qncore.embeddedNul if it
/// contains a zero character and, on Windows, error.qncore.encoding if it is invalid UTF-8.
void check_system_name(const std::string& name);

} // namespace qncore
