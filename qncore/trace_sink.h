#pragma once

#include <string>
#include <string_view>

namespace qntrace {

/// Writes one message as one line: time (UTC), process and thread, level, topic, function, text;
/// control characters of the text become escapes. Never throws; safe for any number of threads.
/// What cannot be written, on a full disk for instance, is dropped.
void write_line(char level, std::string_view topic, std::string_view function,
                std::string_view text) noexcept;

/// Where messages go from now on: the named file, which the next message opens, or standard error
/// when the name is empty or the file cannot be opened. Several processes may name one file.
void set_output(std::string file) noexcept;

} // namespace qntrace
