#include "qnxml/escape.h"

#include <algorithm>

namespace qnxml {

namespace {

constexpr std::string_view special_in_attribute_value = "\"&<";
constexpr std::string_view special_in_text = "&<>";

constexpr std::string_view reference_to(char byte) noexcept {
    switch (byte) {
    case '"':
        return "&quot;";
    case '&':
        return "&amp;";
    case '<':
        return "&lt;";
    default:
        return "&gt;";
    }
}

/// Passes the escaped text to `write`, in runs of plain bytes.
template <class Write>
void escape(std::string_view text, std::string_view special, Write write) {
    for (;;) {
        const std::size_t length = std::min(text.find_first_of(special), text.size());
        if (length != 0) {
            write(text.substr(0, length));
        }
        if (length == text.size()) {
            return;
        }
        write(reference_to(text[length]));
        text.remove_prefix(length + 1);
    }
}

void write_escaped(qncore::IWriteStream& stream, std::string_view text, std::string_view special) {
    escape(text, special,
           [&stream](std::string_view piece) { stream.write(piece.data(), piece.size()); });
}

std::string escaped(std::string_view text, std::string_view special) {
    std::string result;
    result.reserve(text.size());
    escape(text, special, [&result](std::string_view piece) { result.append(piece); });
    return result;
}

} // namespace

void write_escaped_attribute_value(qncore::IWriteStream& stream, std::string_view text) {
    write_escaped(stream, text, special_in_attribute_value);
}

std::string escape_attribute_value(std::string_view text) {
    return escaped(text, special_in_attribute_value);
}

void write_escaped_text(qncore::IWriteStream& stream, std::string_view text) {
    write_escaped(stream, text, special_in_text);
}

std::string escape_text(std::string_view text) {
    return escaped(text, special_in_text);
}

void write_attribute(qncore::IWriteStream& stream, std::string_view name, std::string_view value) {
    const auto write = [&stream](std::string_view piece) {
        stream.write(piece.data(), piece.size());
    };
    write(" ");
    write(name);
    write("=\"");
    write_escaped_attribute_value(stream, value);
    write("\"");
}

} // namespace qnxml
