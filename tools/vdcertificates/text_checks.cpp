#include "tools/vdcertificates/text_checks.h"

#include <algorithm>
#include <array>

#include "tools/vdcertificates/exit_status.h"

namespace tool {
namespace {

struct Range {
    unsigned int first;
    unsigned int last;
};
constexpr std::array hidden{
    Range{0x00, 0x1F},     Range{0x7F, 0x9F},     Range{0x061C, 0x061C},
    Range{0x200E, 0x200F}, Range{0x2028, 0x202E}, Range{0x2066, 0x2069},
};

void check_not_empty(const std::string& subject, std::string_view text) {
    if (text.empty()) {
        throw UsageError(subject + " is empty");
    }
}

/// Throws if the text is invalid UTF-8. Returns its first hidden character, or 0.
unsigned int first_hidden(const std::string& subject, std::string_view text) {
    unsigned int found = 0;
    while (!text.empty()) {
        unsigned int character = 0;
        const std::size_t size = qncore::utf8_to_ucs4_char(text.data(), text.size(), &character);
        if (size == 0) {
            throw UsageError(subject + " is not valid UTF-8");
        }
        found = found == 0 && is_hidden(character) ? character : found;
        text.remove_prefix(size);
    }
    return found;
}

void check_characters(const std::string& subject, std::string_view text,
                      std::string_view forbidden) {
    if (const unsigned int character = first_hidden(subject, text); character != 0) {
        throw UsageError(subject + " holds the control character " +
                         std::string(EscapedCharacter(character).view()) +
                         ", which the file cannot keep");
    }
    const std::size_t place = text.find_first_of(forbidden);
    if (place != std::string_view::npos) {
        throw UsageError(subject + " holds the character " + text[place] +
                         ", which the file cannot keep");
    }
}

} // namespace

void check_server_name(const std::string& subject, std::string_view name) {
    check_not_empty(subject, name);
    check_characters(subject, name, "\"<&");
    if (name.starts_with(' ') || name.ends_with(' ')) {
        throw UsageError(subject + " begins or ends with a blank");
    }
}

void check_path(const std::string& subject, std::string_view path) {
    check_not_empty(subject, path);
    check_characters(subject, path, "<&");
}

void check_trusted_path(const std::string& subject, std::string_view path) {
    check_characters(subject, path, "");
}

void check_searched_name(const std::string& subject, std::string_view name) {
    check_not_empty(subject, name);
    first_hidden(subject, name);
}

void check_password(const std::string& subject, std::string_view password) {
    if (password.find('\0') != std::string_view::npos) {
        throw UsageError(subject + " holds a zero byte");
    }
    if (password.size() > longest_password) {
        throw UsageError(subject + " is longer than " + std::to_string(longest_password) +
                         " bytes");
    }
    first_hidden(subject, password);
}

bool is_hidden(unsigned int codePoint) noexcept {
    return std::ranges::any_of(hidden, [codePoint](const Range& range) {
        return range.first <= codePoint && codePoint <= range.last;
    });
}

EscapedCharacter::EscapedCharacter(unsigned int codePoint, bool always_long) noexcept
    : text_{'\\', 'x'}
    , size_(2) {
    const bool is_long = always_long || codePoint > 0xFF;
    text_[1] = is_long ? 'u' : 'x';
    for (int shift = is_long ? 12 : 4; shift >= 0; shift -= 4) {
        text_[size_++] = "0123456789abcdef"[codePoint >> shift & 0xFU];
    }
}

std::size_t printable_width(std::string_view text) noexcept {
    std::size_t width = 0;
    for_each_printable(text, [&](std::string_view piece) {
        width += static_cast<std::size_t>(std::ranges::count_if(
            piece, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; }));
    });
    return width;
}

} // namespace tool
