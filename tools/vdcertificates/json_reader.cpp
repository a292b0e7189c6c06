#include "tools/vdcertificates/json_reader.h"

#include <charconv>

#include "qncore/utf8.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/secret.h"

namespace tool {
namespace {

class Reader {
  public:
    Reader(std::string_view text, const JsonVisitor& visitor)
        : text_(text)
        , visitor_(visitor) {}

    void read() {
        if (next_is('{')) {
            read_object();
        } else {
            expect('[', "a list of objects");
            read_list(']', [this] { read_object_of_list(); });
        }
        skip_blanks();
        if (place_ != text_.size()) {
            fail("the end");
        }
    }

  private:
    [[noreturn]] void fail(const char* expected) const {
        throw Failure("it is no list of entries: byte " + std::to_string(place_) + " should be " +
                      expected);
    }

    void skip_blanks() {
        place_ = std::min(text_.find_first_not_of(" \t\r\n", place_), text_.size());
    }

    /// Skips blanks, and then the character if it is next.
    bool next_is(char character) {
        skip_blanks();
        const bool is = place_ < text_.size() && text_[place_] == character;
        place_ += is ? 1 : 0;
        return is;
    }

    void expect(char character, const char* expected) {
        if (!next_is(character)) {
            fail(expected);
        }
    }

    /// Calls `read` for each element of a list that ends with `end`.
    template <class Read>
    void read_list(char end, const Read& read) {
        if (next_is(end)) {
            return;
        }
        do {
            read();
        } while (next_is(','));
        expect(end, "a comma or the end of the list");
    }

    void read_object_of_list() {
        expect('{', "an object");
        read_object();
    }

    void read_object() {
        visitor_.begin_object();
        read_list('}', [this] { read_member(); });
        visitor_.end_object();
    }

    void read_member() {
        expect('"', "the name of a member");
        const std::string key = read_string();
        expect(':', "a colon");
        std::optional<std::string> value;
        skip_blanks();
        if (text_.substr(place_).starts_with("null")) {
            place_ += 4;
        } else {
            expect('"', "a string or null");
            value.emplace(read_string());
        }
        visitor_.member(key, value);
        if (value) {
            wipe(*value);
        }
    }

    /// The rest of a string, up to the quote that ends it.
    std::string read_string() {
        std::string string;
        string.reserve(std::max<std::size_t>(raw_size(), smallest_allocation));
        while (place_ < text_.size() && text_[place_] != '"') {
            if (text_[place_] == '\\') {
                read_escape(string);
            } else {
                read_character(string);
            }
        }
        expect('"', "a quote");
        return string;
    }

    /// Appends the bytes before that quote. No escape is shorter than its value.
    std::size_t raw_size() const noexcept {
        std::size_t end = place_;
        while (end < text_.size() && text_[end] != '"') {
            end += text_[end] == '\\' ? 2 : 1;
        }
        return end - place_;
    }

    void read_character(std::string& string) {
        const std::size_t size =
            qncore::utf8_to_ucs4_char(text_.data() + place_, text_.size() - place_, nullptr);
        if (size == 0 || static_cast<unsigned char>(text_[place_]) < 0x20) {
            fail("a character of a string");
        }
        string += text_.substr(place_, size);
        place_ += size;
    }

    void read_escape(std::string& string) {
        constexpr std::string_view names = "\"\\/bfnrt";
        constexpr std::string_view meanings = "\"\\/\b\f\n\r\t";
        ++place_;
        const std::size_t name = place_ < text_.size() ? names.find(text_[place_]) : names.npos;
        if (name != names.npos) {
            string += meanings[name];
            ++place_;
            return;
        }
        unsigned int character = read_unit();
        if (character >= 0xD800 && character < 0xDC00 && text_.substr(place_).starts_with("\\u")) {
            ++place_;
            const unsigned int low = read_unit() - 0xDC00;
            character = low < 0x400 ? 0x10000 + ((character - 0xD800) << 10) + low : 0xD800;
        }
        char bytes[4];
        const std::size_t size = qncore::ucs4_char_to_utf8(character, bytes, bytes + sizeof bytes);
        if (size == 0) {
            fail("a character of Unicode");
        }
        string.append(bytes, size);
    }

    /// The four digits after the next character, `u`.
    unsigned int read_unit() {
        unsigned int unit = 0;
        const std::string_view digits =
            text_.substr(std::min(place_ + 1, text_.size())).substr(0, 4);
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
        if (place_ >= text_.size() || text_[place_] != 'u' || error != std::errc() ||
            end != digits.data() + 4) {
            fail("an escape");
        }
        place_ += 5;
        return unit;
    }

    /// Longer than a string stores inline, so that moving it moves the buffer and leaves no copy.
    static constexpr std::size_t smallest_allocation = 32;

    std::string_view text_;
    const JsonVisitor& visitor_;
    std::size_t place_ = 0;
};

} // namespace

void read_json_objects(std::string_view text, const JsonVisitor& visitor) {
    Reader(text, visitor).read();
}

} // namespace tool
