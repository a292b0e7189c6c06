#pragma once

#include <string>
#include <string_view>

#include "qncore/utf8.h"

namespace tool {

/// These throw UsageError; `subject` names the text in the message.
///
/// The file holds server names and paths in UTF-8 without escapes, except the trusted path. So
/// texts that would break the file or be read differently are refused: control characters, `<` and
/// `&`; in a server name also `"`, which ends it there, and a blank at either end, with which
/// nobody would find it. Characters that change what a terminal shows (is_hidden()) are refused
/// everywhere.
void check_server_name(const std::string& subject, std::string_view name);
void check_path(const std::string& subject, std::string_view path);
void check_trusted_path(const std::string& subject, std::string_view path);

/// At most 245 bytes fit into one block of the machine's key (RFC 8017, section 7.2.1: 2048 bits
/// less 11 bytes).
void check_password(const std::string& subject, std::string_view password);
inline constexpr std::size_t longest_password = 245;

/// Checks a name to search for: not empty, and UTF-8.
void check_searched_name(const std::string& subject, std::string_view name);

/// True for characters that a terminal does not show as such: control characters (C0, C1), line and
/// paragraph separators, and the marks and overrides of direction (Unicode, UAX #9).
bool is_hidden(unsigned int codePoint) noexcept;

/// Calls `put` with the pieces of a text on one line, in which hidden characters and invalid UTF-8
/// become `\x1b` or `\u202e`. Does not allocate.
template <class Put>
void for_each_printable(std::string_view text, const Put& put);

/// The number of characters of the printable text.
std::size_t printable_width(std::string_view text) noexcept;

/// `\xNN` for a byte, `\uNNNN` for a larger code point.
class EscapedCharacter {
  public:
    explicit EscapedCharacter(unsigned int codePoint, bool always_long = false) noexcept;
    std::string_view view() const noexcept { return {text_, size_}; }

  private:
    char text_[8];
    std::size_t size_;
};

template <class Put>
void for_each_printable(std::string_view text, const Put& put) {
    std::size_t plain = 0;
    while (plain < text.size()) {
        unsigned int character = 0;
        const std::size_t size =
            qncore::utf8_to_ucs4_char(text.data() + plain, text.size() - plain, &character);
        if (size != 0 && !is_hidden(character)) {
            plain += size;
            continue;
        }
        put(text.substr(0, plain));
        const auto byte = static_cast<unsigned char>(text[plain]);
        put(EscapedCharacter(size == 0 ? byte : character).view());
        text.remove_prefix(plain + std::max<std::size_t>(size, 1));
        plain = 0;
    }
    put(text);
}

} // namespace tool
