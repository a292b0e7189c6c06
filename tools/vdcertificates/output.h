#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/vdcertificates/entry.h"

namespace tool {

enum class Format : std::uint8_t { text, json };

/// One field of an entry as all output shows it. The value refers to the entry; nullopt if the role
/// has no such field or a password cannot be read.
struct Field {
    std::string_view key;
    std::string_view heading;
    std::optional<std::string_view> (*value)(const Entry& entry);
};

/// In the order of the output. The password is the last one.
const std::array<Field, 7>& fields();

/// Standard output through one buffer, which is wiped.
class Output {
  public:
    Secret& text() noexcept { return text_; }
    Output& operator<<(std::string_view piece) {
        text_.append(piece);
        return *this;
    }
    /// Appends a text on one line, with hidden characters escaped.
    void append_printable(std::string_view text);
    /// Does the same in a column of that many characters.
    void append_column(std::string_view text, std::size_t width);

    /// Writes the buffered text if it is large; flush() always does. Throw Failure.
    void flush_when_full();
    void flush();

  private:
    Secret text_;
};

/// Writes `name: value` and a line end. On a terminal the values are in one column, after `width`
/// characters.
void append_line(Output& output, std::string_view name, std::string_view value, std::size_t width);

/// Writes a whole text to standard output. Throws Failure if it cannot be written.
void print(std::string_view text);

/// Writes one line, which begins with the program's name, to standard error. Does not allocate.
void print_error(std::string_view message) noexcept;

} // namespace tool
