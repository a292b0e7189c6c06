#include "qnxml/check_xml.h"

#include <algorithm>
#include <optional>
#include <span>
#include <string_view>
#include <utility>

#include "qncore/embedded_nul.h"
#include "qncore/error_composer.h"
#include "qnxml/encoding_names.h"
#include "qnxml/errors.h"

namespace qnxml {

namespace {

using namespace std::string_view_literals;

constexpr std::size_t least_size = 32;

// Names of encodings in a declaration, compared by encoding_names_equal().
constexpr std::string_view utf8_names[] = {"utf8"};
constexpr std::string_view utf16_names[] = {"utf16", "utf16le", "ucs2", "ucs2le",
                                            "iso-10646-ucs-2"};
constexpr std::string_view utf16be_names[] = {"utf16be", "ucs2be"};
constexpr std::string_view ucs4_names[] = {"utf32", "utf32le", "ucs4", "ucs4le", "iso-10646-ucs-4"};
constexpr std::string_view ucs4be_names[] = {"utf32be", "ucs4be"};

struct Encoding {
    const char* name;    ///< as reported
    std::size_t unit;    ///< bytes of a code unit
    std::size_t lowByte; ///< which of them is the low one
    std::string_view mark;
    std::size_t sniffedUnits; ///< units that recognise it without a mark; 0 if none do
    std::span<const std::string_view> declaredNames;
};

/// In the order in which marks are tried. Required: the marks of UCS-4 have this order of bytes,
/// and FF FE 00 00 is a mark of UTF-16.
constexpr Encoding encodings[] = {
    {"UCS-4", 4, 0, "\0\0\xFF\xFE"sv, 4, ucs4_names},
    {"UCS-4BE", 4, 3, "\xFE\xFF\0\0"sv, 4, ucs4be_names},
    {"UTF-8", 1, 0, "\xEF\xBB\xBF"sv, 0, utf8_names},
    {"UTF-16", 2, 0, "\xFF\xFE"sv, 2, utf16_names},
    {"UTF-16BE", 2, 1, "\xFE\xFF"sv, 2, utf16be_names},
};

/// The encoding of a block if none is recognised. Its declaration may then name any encoding.
constexpr Encoding unrecognised = {"UTF-8", 1, 0, {}, 0, {}};

/// The first encoding for which the test holds; `unrecognised` if there is none.
template <class Test>
const Encoding& find_encoding(const Test& test) noexcept {
    const auto* const found = std::find_if(std::begin(encodings), std::end(encodings), test);
    return found != std::end(encodings) ? *found : unrecognised;
}

const Encoding& detect_mark(std::string_view block) noexcept {
    return find_encoding([&](const Encoding& entry) { return block.starts_with(entry.mark); });
}

/// Recognises a wide encoding by a run of units in which only the low byte is not zero. No block
/// starts with the runs of two encodings.
const Encoding& sniff_encoding(std::string_view block) noexcept {
    return find_encoding([&](const Encoding& entry) {
        const std::size_t length = entry.sniffedUnits * entry.unit; // at most 16 of at least 28
        bool matches = length > 0;
        for (std::size_t i = 0; matches && i < length; ++i) {
            matches = (block[i] != '\0') == (i % entry.unit == entry.lowByte);
        }
        return matches;
    });
}

/// A text as the low bytes of its code units; the other bytes are ignored.
class Units {
  public:
    /// `bytes` begins with a low byte.
    Units(std::string_view bytes, std::size_t unit) noexcept
        : bytes_(bytes)
        , unit_(unit) {}

    bool at_end() const noexcept { return bytes_.empty(); }
    char front() const noexcept { return bytes_.front(); }
    void step(std::size_t count = 1) noexcept {
        bytes_.remove_prefix(std::min(count * unit_, bytes_.size()));
    }

    bool starts_with(std::string_view text) const noexcept {
        Units rest = *this;
        for (const char byte : text) {
            if (rest.at_end() || rest.front() != byte) {
                return false;
            }
            rest.step();
        }
        return true;
    }

    /// From the first occurrence of `text` on; at the end if there is none.
    Units find(std::string_view text) const noexcept {
        Units rest = *this;
        while (!rest.at_end() && !rest.starts_with(text)) {
            rest.step();
        }
        return rest;
    }

    /// The part before `rest`, which is a tail of this.
    Units before(const Units& rest) const noexcept {
        return {bytes_.substr(0, bytes_.size() - rest.bytes_.size()), unit_};
    }

    bool at_any_of(std::string_view bytes) const noexcept {
        return !at_end() && bytes.find(front()) != std::string_view::npos;
    }

    void skip_white_space() noexcept {
        while (at_any_of(white_space)) {
            step();
        }
    }

    /// The low bytes of all units.
    std::string text() const {
        std::string text;
        for (Units rest = *this; !rest.at_end(); rest.step()) {
            text += rest.front();
        }
        return text;
    }

    static constexpr std::string_view white_space = "\t\n\r ";

  private:
    std::string_view bytes_;
    std::size_t unit_;
};

/// The quoted text after the first "encoding" and a "=". Required: the word counts anywhere, even
/// inside another value.
std::optional<std::string> find_declared_encoding(const Units& declaration) {
    constexpr std::string_view keyword = "encoding";
    Units rest = declaration.find(keyword);
    rest.step(keyword.size());
    rest.skip_white_space();
    if (!rest.at_any_of("=")) {
        return {};
    }
    rest.step();
    rest.skip_white_space();
    if (!rest.at_any_of("'\"")) {
        return {};
    }
    const char quote = rest.front();
    rest.step();
    const Units end = rest.find({&quote, 1});
    if (end.at_end()) {
        return {};
    }
    return rest.before(end).text();
}

bool may_declare(const Encoding& encoding, const std::string& name) noexcept {
    const auto& names = encoding.declaredNames;
    return std::any_of(names.begin(), names.end(), [&](std::string_view allowed) {
        return encoding_names_equal(name.data(), name.size(), allowed.data(), allowed.size());
    });
}

void check_declared_encoding(const Encoding& apparent, const std::string& declared) {
    qncore::check_no_embedded_nul(declared);
    if (!may_declare(apparent, declared)) {
        qncore::ErrorComposer("XML has mismatched encoding. Input appears to be "
                              "{@apparentEncoding}, but xml declaration claims it is "
                              "{@declaredEncoding}")
            .param("apparentEncoding", apparent.name)
            .param("declaredEncoding", declared)
            .throw_error(error::qnxml, QN_LOCATION("qnxml::check_xml()"));
    }
}

/// Sets an output unless it is null.
template <class Output, class Value>
void set(Output* output, Value&& value) {
    if (output != nullptr) {
        *output = std::forward<Value>(value);
    }
}

} // namespace

bool check_xml(const void* data, std::uint64_t size, bool* hasDeclaration, std::string* encoding) {
    if (size < least_size) {
        return false;
    }
    set(hasDeclaration, false);
    std::string_view block(static_cast<const char*>(data), size);
    const Encoding& marked = detect_mark(block);
    block.remove_prefix(marked.mark.size());
    const Encoding& sniffed = sniff_encoding(block);
    if (&marked != &unrecognised && &sniffed != &unrecognised && &marked != &sniffed) {
        return false;
    }
    const Encoding& apparent = &marked != &unrecognised ? marked : sniffed;
    set(encoding, apparent.name);
    block.remove_prefix(apparent.lowByte);
    Units units(block, apparent.unit);
    if (units.front() != '<') {
        return false;
    }
    constexpr std::string_view start = "<?xml";
    if (!units.starts_with(start)) {
        return true;
    }
    units.step(start.size());
    if (!units.at_any_of(Units::white_space)) {
        return true;
    }
    set(hasDeclaration, true);
    std::optional<std::string> declared = find_declared_encoding(units.before(units.find("?>")));
    if (declared) {
        if (&apparent != &unrecognised) {
            check_declared_encoding(apparent, *declared);
        }
        set(encoding, *std::move(declared));
    }
    return true;
}

} // namespace qnxml
