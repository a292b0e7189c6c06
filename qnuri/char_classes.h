#pragma once

#include <array>
#include <cstdint>
#include <string_view>

/// The character classes of the URI rules (RFC 2396, section 2; RFC 3261, 25.1; RFC 2806, 2.2).
/// They are ASCII whatever the locale of the process.
namespace qnuri::chars {

/// A set of characters. Sets are united by |.
using CharClass = std::uint32_t;

inline constexpr CharClass lower = 1U << 0;
inline constexpr CharClass upper = 1U << 1;
inline constexpr CharClass digit = 1U << 2;
inline constexpr CharClass hex_letter = 1U << 3;
inline constexpr CharClass mark = 1U << 4;
inline constexpr CharClass reserved = 1U << 5;
inline constexpr CharClass path_punctuation = 1U << 6;
inline constexpr CharClass userinfo_punctuation = 1U << 7;
inline constexpr CharClass sip_user_punctuation = 1U << 8;
inline constexpr CharClass sip_password_punctuation = 1U << 9;
inline constexpr CharClass sip_value_punctuation = 1U << 10;
inline constexpr CharClass bracket = 1U << 11;
inline constexpr CharClass host_punctuation = 1U << 12;
inline constexpr CharClass scheme_punctuation = 1U << 13;
inline constexpr CharClass tel_separator = 1U << 14;
inline constexpr CharClass tel_symbol = 1U << 15;
inline constexpr CharClass colon = 1U << 16;
inline constexpr CharClass slash = 1U << 17;
inline constexpr CharClass question_mark = 1U << 18;
inline constexpr CharClass number_sign = 1U << 19;
inline constexpr CharClass at_sign = 1U << 20;
inline constexpr CharClass comma = 1U << 21;
inline constexpr CharClass semicolon = 1U << 22;
inline constexpr CharClass quote = 1U << 23;
inline constexpr CharClass separator = 1U << 25; ///< of directories, in any system
inline constexpr CharClass any = 1U << 24;       ///< every byte

inline constexpr CharClass alpha = lower | upper;
inline constexpr CharClass alnum = alpha | digit;
inline constexpr CharClass hex = digit | hex_letter;
inline constexpr CharClass unreserved = alnum | mark;
inline constexpr CharClass sip_param_punctuation = sip_value_punctuation | bracket;
inline constexpr CharClass delimiter = colon | slash | question_mark | number_sign;

inline constexpr std::array<CharClass, 256> table = [] {
    std::array<CharClass, 256> classes{};
    classes.fill(any);
    const auto add = [&classes](CharClass member, std::string_view characters) {
        for (const char c : characters) {
            classes[static_cast<unsigned char>(c)] |= member;
        }
    };
    add(lower, "abcdefghijklmnopqrstuvwxyz");
    add(upper, "ABCDEFGHIJKLMNOPQRSTUVWXYZ");
    add(digit, "0123456789");
    add(hex_letter, "abcdefABCDEF");
    add(mark, "-_.!~*'()");
    add(reserved, ";/?:@&=+$,");
    add(path_punctuation, ";/:@&=+$,");
    add(userinfo_punctuation, ";:&=+$,");
    add(sip_user_punctuation, ";/?&=+$,");
    add(sip_password_punctuation, "&=+$,");
    add(sip_value_punctuation, "/:&+$");
    add(bracket, "[]");
    add(host_punctuation, "!$&'()*+,;=");
    add(scheme_punctuation, "+-.");
    add(tel_separator, "-.()");
    add(tel_symbol, "*#");
    add(colon, ":");
    add(slash, "/");
    add(question_mark, "?");
    add(number_sign, "#");
    add(at_sign, "@");
    add(comma, ",");
    add(semicolon, ";");
    add(separator, "/\\");
    add(quote, "\"");
    return classes;
}();

constexpr bool is(char c, CharClass one_of) noexcept {
    return (table[static_cast<unsigned char>(c)] & one_of) != 0;
}

constexpr char to_lower(char c) noexcept {
    return is(c, upper) ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// Returns the first position at or after `start` that holds a member of the class, or the size.
constexpr std::size_t find_first(std::string_view text, CharClass one_of,
                                 std::size_t start = 0) noexcept {
    while (start < text.size() && !is(text[start], one_of)) {
        ++start;
    }
    return start;
}

/// Returns the first position at or after `start` that holds no member of the class, or the size.
constexpr std::size_t find_first_not(std::string_view text, CharClass one_of,
                                     std::size_t start = 0) noexcept {
    while (start < text.size() && is(text[start], one_of)) {
        ++start;
    }
    return start;
}

} // namespace qnuri::chars
