#pragma once

#include <optional>
#include <string>

namespace platform {

/// True when standard output goes to a terminal.
bool output_is_terminal();

/// Asks on the controlling terminal, without echo, and gives the line typed without its end; the
/// echo is restored whatever happens. Nothing when there is no terminal or the input ends.
std::optional<std::string> ask_secret(const std::string& prompt);

} // namespace platform
