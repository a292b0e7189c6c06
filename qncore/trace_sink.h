#pragma once

#include <string>
#include <string_view>

namespace qntrace {

/// Writes one message as one line: time (UTC), process and thread, level, topic, function, text.
/// Control characters of the text are escaped. Thread-safe. A line that cannot be written, for
/// instance to a full disk, is dropped.
void write_line(char level, std::string_view topic, std::string_view function,
                std::string_view text) noexcept;

/// Sends messages to the named file, which the next message opens, or to standard error if the
/// name is empty or the file cannot be opened. Several processes may share a file.
void set_output(std::string file) noexcept;

} // namespace qntrace
