#include "tools/vdcertificates/text_checks.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include <utf8.h>

#include "tools/vdcertificates/exit_status.h"

namespace tool {
namespace {

bool is_control(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

std::string escaped(char character) {
    std::array<char, 5> text{};
    std::snprintf(text.data(), text.size(), "\\x%02x", static_cast<unsigned char>(character));
    return text.data();
}

void check_not_empty(const std::string& subject, std::string_view text) {
    if (text.empty()) {
        throw UsageError(subject + " is empty");
    }
}

void check_encoding(const std::string& subject, std::string_view text) {
    if (!utf8::is_valid(text.begin(), text.end())) {
        throw UsageError(subject + " is not valid UTF-8");
    }
}

void check_characters(const std::string& subject, std::string_view text,
                      std::string_view forbidden) {
    check_encoding(subject, text);
    const auto control = std::ranges::find_if(text, is_control);
    if (control != text.end()) {
        throw UsageError(subject + " holds the control character " + escaped(*control) +
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
    check_encoding(subject, name);
}

void check_password(const std::string& subject, std::string_view password) {
    if (password.find('\0') != std::string_view::npos) {
        throw UsageError(subject + " holds a zero byte");
    }
    if (password.size() > longest_password) {
        throw UsageError(subject + " is longer than " + std::to_string(longest_password) +
                         " bytes");
    }
    check_encoding(subject, password);
}

std::string printable(std::string_view text) {
    std::string line;
    for (const char character : text) {
        if (is_control(character)) {
            line += escaped(character);
        } else {
            line += character;
        }
    }
    return line;
}

std::string folded(std::string text) {
    for (char& character : text) {
        if (character >= 'A' && character <= 'Z') {
            character = static_cast<char>(character - 'A' + 'a');
        }
    }
    return text;
}

} // namespace tool
