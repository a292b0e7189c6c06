// check_xml over any bytes, and over the same text in every width of code units.
#include <cstdint>

#include "fuzz/require.h"
#include "qncore/error_exception.h"
#include "qnxml/check_xml.h"
#include "qnxml/errors.h"

namespace {

struct Outcome {
    bool passes = false;
    bool hasDeclaration = true;
    bool throws = false;
    std::string encoding = "untouched";

    bool operator==(const Outcome&) const = default;
};

Outcome check(const std::string& block) {
    Outcome outcome;
    try {
        outcome.passes = qnxml::check_xml(block.data(), block.size(), &outcome.hasDeclaration,
                                          &outcome.encoding);
        fuzz::require(qnxml::check_xml(block.data(), block.size(), nullptr, nullptr) ==
                          outcome.passes,
                      "no outputs, the same result");
    } catch (const qncore::ErrorException& exception) {
        outcome.throws = true;
        fuzz::require(exception.matches(qnxml::error::qnxml) ||
                          exception.matches(qncore::error::qncore_embeddedNul),
                      "one of two errors");
        fuzz::require(outcome.hasDeclaration, "only a declaration throws");
    }
    return outcome;
}

struct Form {
    const char* name;
    std::size_t unit;
    std::size_t low_byte;
};

constexpr Form forms[] = {{"UTF-16", 2, 0}, {"UTF-16BE", 2, 1}, {"UCS-4", 4, 0}, {"UCS-4BE", 4, 3}};

std::string widen(const std::string& text, const Form& form) {
    std::string wide(text.size() * form.unit, '\0');
    for (std::size_t i = 0; i < text.size(); ++i) {
        wide[i * form.unit + form.low_byte] = text[i];
    }
    return wide;
}

/// A text of single bytes, none of which is taken for a mark or for half a character.
bool is_narrow(const std::string& text) {
    return text.find('\0') == std::string::npos && !text.starts_with("\xEF\xBB\xBF") &&
           !text.starts_with("\xFF\xFE") && !text.starts_with("\xFE\xFF");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(data, data + size);
    const Outcome outcome = check(text);
    if (size < 32) {
        fuzz::require(outcome == Outcome{}, "a short block is refused and touches nothing");
    } else if (is_narrow(text)) {
        for (const Form& form : forms) {
            const Outcome wide = check(widen(text, form));
            fuzz::require(wide.hasDeclaration == outcome.hasDeclaration,
                          "a declaration is one in any width");
            fuzz::require(wide.throws || wide.passes == outcome.passes, "XML is XML in any width");
            fuzz::require(wide.throws || wide.encoding == form.name ||
                              wide.encoding == outcome.encoding,
                          "the encoding's own name or the declared one");
        }
    }
    return 0;
}
