#pragma once

#include <string_view>
#include <vector>

#include "tools/vdcertificates/entry.h"

namespace tool {

/// Writes JSON (RFC 8259), indented by two blanks per level, into a text that is wiped. Invalid
/// UTF-8 becomes U+FFFD, and characters that a terminal does not show become escapes.
class JsonWriter {
  public:
    explicit JsonWriter(Secret& text)
        : text_(text) {}

    /// Opens with `[` or `{`.
    void begin(char bracket);
    void end();
    /// Writes the name of the next member of an object.
    void key(std::string_view name);
    void value(std::string_view text);
    void value(bool truth);
    void null();

    /// Writes all fields of an entry, with the password in clear or null.
    void entry(const Entry& entry, bool password);

  private:
    void separate();
    void new_line();
    void append_string(std::string_view text);

    struct Level {
        char end;
        bool is_empty = true;
    };

    Secret& text_;
    std::vector<Level> levels_;
    bool after_key_ = false;
};

} // namespace tool
