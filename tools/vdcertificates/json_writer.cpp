#include "tools/vdcertificates/json_writer.h"

#include "qncore/utf8.h"
#include "tools/vdcertificates/output.h"
#include "tools/vdcertificates/text_checks.h"

namespace tool {

void JsonWriter::begin(char bracket) {
    separate();
    text_.append({&bracket, 1});
    levels_.push_back({bracket == '[' ? ']' : '}'});
}

void JsonWriter::end() {
    const Level level = levels_.back();
    levels_.pop_back();
    if (!level.is_empty) {
        new_line();
    }
    text_.append({&level.end, 1});
}

void JsonWriter::key(std::string_view name) {
    separate();
    append_string(name);
    text_.append(": ");
    after_key_ = true;
}

void JsonWriter::value(std::string_view text) {
    separate();
    append_string(text);
}

void JsonWriter::value(bool truth) {
    separate();
    text_.append(truth ? "true" : "false");
}

void JsonWriter::null() {
    separate();
    text_.append("null");
}

void JsonWriter::entry(const Entry& entry, bool password) {
    begin('{');
    for (const Field& field : fields()) {
        key(field.key);
        const auto shown = field.value(entry);
        if (shown && (password || &field != &fields().back())) {
            value(*shown);
        } else {
            null();
        }
    }
    if (entry.role() == nullptr) { // then the role does not say it
        key("section");
        value(*entry.section);
    }
    end();
}

void JsonWriter::separate() {
    if (after_key_ || levels_.empty()) {
        after_key_ = false;
        return;
    }
    if (!levels_.back().is_empty) {
        text_.append(",");
    }
    levels_.back().is_empty = false;
    new_line();
}

void JsonWriter::new_line() {
    text_.append("\n");
    for (std::size_t i = 0; i < levels_.size(); ++i) {
        text_.append("  ");
    }
}

void JsonWriter::append_string(std::string_view text) {
    text_.append("\"");
    while (!text.empty()) {
        unsigned int character = 0;
        const std::size_t size = qncore::utf8_to_ucs4_char(text.data(), text.size(), &character);
        if (size == 0) {
            text_.append("\xEF\xBF\xBD");
        } else if (character == '"' || character == '\\') {
            text_.append("\\");
            text_.append(text.substr(0, 1));
        } else if (character == '\n' || character == '\t' || character == '\r') {
            text_.append(character == '\n' ? "\\n" : character == '\t' ? "\\t" : "\\r");
        } else if (is_hidden(character)) {
            text_.append(EscapedCharacter(character, true).view());
        } else {
            text_.append(text.substr(0, size));
        }
        text.remove_prefix(std::max<std::size_t>(size, 1));
    }
    text_.append("\"");
}

} // namespace tool
