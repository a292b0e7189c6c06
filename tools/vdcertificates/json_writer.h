#pragma once

#include <string_view>
#include <vector>

#include "tools/vdcertificates/entry.h"

namespace tool {

/// Writes JSON (RFC 8259), indented by two blanks a level, into a text that is wiped. What is not
/// UTF-8 becomes U+FFFD, what a terminal would not show an escape.
class JsonWriter {
  public:
    explicit JsonWriter(Secret& text)
        : text_(text) {}

    /// Opens with `[` or `{`.
    void begin(char bracket);
    void end();
    /// The name of the member that comes next in an object.
    void key(std::string_view name);
    void value(std::string_view text);
    void value(bool truth);
    void null();

    /// All fields of an entry, the password in clear or null.
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
