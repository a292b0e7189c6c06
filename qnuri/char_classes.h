#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// The character classes of the URI rules (after RFC 2396, 2, RFC 3261, 25.1, and RFC 2806): ASCII,
// whatever the locale of the process.
namespace qnuri::impl {

using CharClass = std::uint32_t;

// What a character may be. Classes can be united by |, for they are bits of one table.
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
inline constexpr CharClass sip_param_punctuation = 1U << 10;
inline constexpr CharClass host_punctuation = 1U << 11;
inline constexpr CharClass delimiter = 1U << 12;
inline constexpr CharClass scheme_punctuation = 1U << 13;
inline constexpr CharClass always_escaped = 1U << 14;
inline constexpr CharClass tel_separator = 1U << 15;
inline constexpr CharClass tel_symbol = 1U << 16;

inline constexpr CharClass alpha = lower | upper;
inline constexpr CharClass alnum = alpha | digit;
inline constexpr CharClass hex = digit | hex_letter;
inline constexpr CharClass unreserved = alnum | mark;

inline constexpr std::array<CharClass, 256> char_classes = [] {
    std::array<CharClass, 256> table{};
    const auto add = [&table](CharClass member, std::string_view characters) {
        for (const char c : characters) {
            table[static_cast<unsigned char>(c)] |= member;
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
    add(sip_param_punctuation, "[]/:&+$");
    add(host_punctuation, "!$&'()*+,;=");
    add(delimiter, ":/?#");
    add(scheme_punctuation, "+-.");
    add(always_escaped, " <>\"{}|\\^[]`#%");
    add(tel_separator, "-.()");
    add(tel_symbol, "*#");
    return table;
}();

constexpr bool is(char c, CharClass one_of) noexcept {
    return (char_classes[static_cast<unsigned char>(c)] & one_of) != 0;
}

constexpr char to_lower(char c) noexcept {
    return is(c, upper) ? static_cast<char>(c + ('a' - 'A')) : c;
}

/// Value of a hexadecimal digit.
constexpr unsigned hex_value(char c) noexcept {
    return static_cast<unsigned>(is(c, digit) ? c - '0' : to_lower(c) - 'a' + 10);
}

/// Whether "%" and two hexadecimal digits stand at `position`, which lies inside the text.
constexpr bool is_escape(std::string_view text, std::size_t position) noexcept {
    return text[position] == '%' && text.size() - position > 2 && is(text[position + 1], hex) &&
           is(text[position + 2], hex);
}

/// The byte that the escape at `position` stands for.
constexpr char escaped_char(std::string_view text, std::size_t position) noexcept {
    return static_cast<char>(hex_value(text[position + 1]) * 16 + hex_value(text[position + 2]));
}

/// The first place from `start` on that holds one of the class, or the end of the text.
constexpr std::size_t find_first(std::string_view text, CharClass one_of,
                                 std::size_t start = 0) noexcept {
    while (start < text.size() && !is(text[start], one_of)) {
        ++start;
    }
    return start;
}

/// The first place from `start` on that is not of the class, or the end.
constexpr std::size_t find_first_not(std::string_view text, CharClass one_of,
                                     std::size_t start = 0) noexcept {
    while (start < text.size() && is(text[start], one_of)) {
        ++start;
    }
    return start;
}

/// The first place that neither is of the class nor begins an escape, or the end. The class holds
/// the digits of an escape.
constexpr std::size_t find_first_invalid(std::string_view text, CharClass one_of) noexcept {
    std::size_t end = find_first_not(text, one_of);
    while (end < text.size() && is_escape(text, end)) {
        end = find_first_not(text, one_of, end + 1);
    }
    return end;
}

} // namespace qnuri::impl
