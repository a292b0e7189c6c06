#pragma once

#include <string>
#include <string_view>

namespace qntrace {

struct TraceLine {
    char level;
    std::string_view topic;
    std::string_view function;
    std::string_view file;
    unsigned line;
    std::string_view text;
};

/// Writes one message as one line: time (UTC), process and thread, level, topic, function, text;
/// control characters of the text are written as escapes. Never throws; safe for any number of
/// threads.
void write_line(const TraceLine& line) noexcept;

/// Where messages go from now on: the named file (5 MiB, three older ones kept), or standard
/// error when the name is empty or the file cannot be opened.
void open_sink(const std::string& file) noexcept;

} // namespace qntrace
