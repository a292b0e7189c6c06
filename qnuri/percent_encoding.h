#pragma once

#include <string>
#include <string_view>

#include "qnuri/char_classes.h"

/// Percent-encoding (RFC 3986, 2.1): "%" and two hexadecimal digits stand for one byte.
namespace qnuri {

/// Tells whether an escape begins at `position`, which must be inside the text.
constexpr bool is_escape(std::string_view text, std::size_t position) noexcept {
    return text[position] == '%' && text.size() - position > 2 &&
           chars::is(text[position + 1], chars::hex) && chars::is(text[position + 2], chars::hex);
}

/// Returns the byte that the escape at `position` stands for.
constexpr char escaped_char(std::string_view text, std::size_t position) noexcept {
    const auto value = [](char digit) {
        return chars::is(digit, chars::digit) ? digit - '0' : chars::to_lower(digit) - 'a' + 10;
    };
    return static_cast<char>(value(text[position + 1]) * 16 + value(text[position + 2]));
}

/// Replaces each escape whose byte is in the class by that byte. Leaves other escapes, and a "%"
/// without two digits, as they are.
std::string percent_decode(std::string_view text, chars::CharClass decoded = chars::any);

/// Replaces each byte that is not in the class by its escape, with lower-case digits.
std::string percent_encode(std::string_view text, chars::CharClass kept);

} // namespace qnuri
