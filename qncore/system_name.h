#pragma once

#include <string>

namespace qncore {

/// Refuses a text that cannot go to the system as a name: throws error.qncore.embeddedNul when a
/// zero stands inside it and, on Windows, error.qncore.encoding when it is no UTF-8.
void check_system_name(const std::string& name);

} // namespace qncore
