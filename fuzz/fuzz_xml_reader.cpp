// The reader against expat (with namespaces): whatever expat accepts the reader reports alike, by
// elements, attributes, text, comments and targets of instructions, and in fills of any size. And
// the tokenizer against itself without bytes at hand, character by character.
//
// Where the two differ by rule:
// - The reader skips DOCTYPE, in which it knows nothing but angle brackets: no entities, no default
//   attributes. Documents with an external or an internal subset are not compared.
// - The reader knows UTF-8 only, so expat is told to take UTF-8.
// - Data of instructions: the reader reports the white space in front and loses a lone "?", so
// "??>"
//   does not end one. Documents with that are not compared.
// - After a CR as the last byte of the data, and after a character that is cut by the end, the last
//   fill is read again. Neither is compared.
// - What expat accepts and the reader refuses is in `refusals`.
// - The reader accepts more: several root elements, dots before names, any control character, "]]>"
//   in text, references without a semicolon, prefixes unbound by xmlns:p="", two attributes that
//   are one by their namespaces. Nothing is said about that here.
#include <algorithm>
#include <cstdint>
#include <optional>
#include <sstream>
#include <string_view>

#include <expat.h>

#include "fuzz/require.h"
#include "qncore/error_exception.h"
#include "qnxml/reader.h"
#include "qnxml/stream_tokenizer.h"
#include "tests/support/memory_stream.h"

namespace {

using qnxml::XmlNodeType;
using qnxml::XmlReader;

/// Precedes each event. No document that expat accepts contains it.
constexpr char event_mark = '\1';

constexpr std::string_view refusals[] = {
    "Invalid version, expecting \"1.0\"",        "Mismatched encodings. ",
    "Unexpected value of 'xml:space' attribute",
    "Invalid hex character reference",     // more than 8 digits
    "Invalid decimal character reference", // more than 10 digits
};

struct Report {
    std::string events;
    std::string error; ///< empty for a document that was read to its end

    bool operator==(const Report&) const = default;
};

std::string read_value_in_pieces(qncore::IReadStream& stream) {
    std::string value;
    char piece[7];
    while (const std::uint64_t count = stream.read(piece, sizeof piece)) {
        value.append(piece, count);
    }
    return value;
}

/// The value of the node, in one of the ways to get it.
std::string read_value(XmlReader& reader, std::size_t way) {
    switch (way % 3) {
    case 0:
        return reader.value();
    case 1:
        return read_value_in_pieces(reader.value_stream());
    default:
        support::MemoryWriteStream stream;
        reader.read_value_into_stream(stream);
        return stream.text;
    }
}

std::string full_name(const qnxml::XmlNode& node) {
    const std::string* const space = node.namespace_name();
    const bool has_space = space != nullptr && !space->empty();
    return (has_space ? *space + "|" : "") + std::string(node.local_name());
}

std::string start_event(const qnxml::XmlElement& element) {
    std::string event = event_mark + ("<" + full_name(element));
    for (const qnxml::XmlAttribute& attribute : element.attributes()) {
        if (attribute.prefix() != "xmlns" && attribute.qualified_name() != "xmlns") {
            event += event_mark + full_name(attribute) + "=" + attribute.value();
        }
    }
    return event + event_mark;
}

/// The event of the node on which the reader stands.
std::string event_of(XmlReader& reader, std::size_t way) {
    const XmlReader::ElementPtr element = reader.current_element();
    std::string end_event = event_mark + ("/" + full_name(*element));
    switch (reader.node_type()) {
    case XmlNodeType::Element:
        return start_event(*element) +
               (element->kind() == qnxml::XmlElementKind::empty ? end_event : "");
    case XmlNodeType::EndElement:
        return end_event;
    case XmlNodeType::PI:
        return event_mark + ("?" + std::string(element->qualified_name()));
    case XmlNodeType::Comment:
        return event_mark + ("!" + read_value(reader, way)) + event_mark;
    case XmlNodeType::Text:
    case XmlNodeType::Whitespace:
    case XmlNodeType::CDATA:
        return element->kind() != qnxml::XmlElementKind::null ? read_value(reader, way) : "";
    default:
        return "";
    }
}

bool reads_on(XmlReader& reader) {
    try {
        return reader.read_next();
    } catch (const qncore::ErrorException&) {
        return false;
    }
}

Report report_by_reader(const std::string& document, std::size_t bufferSize) {
    qnxml::XmlStreamTokenizer tokenizer(
        {}, 1, bufferSize,
        qnxml::XmlStreamTokenizer::Stream(new support::MemoryReadStream(document)));
    XmlReader reader(&tokenizer);
    reader.set_skip_whitespace(false);
    Report report;
    try {
        for (std::size_t node = 0; reader.read_next(); ++node) {
            report.events += event_of(reader, node);
        }
    } catch (const qncore::ErrorException& exception) {
        report.error = exception.what();
        fuzz::require(reader.node_type() == XmlNodeType::Error && !reads_on(reader),
                      "a failure is final");
    }
    return report;
}

/// The tokenizer without bytes at hand: each character comes through get_next_char().
class PlainTokenizer final : public qnxml::XmlCharStreamTokenizerBase {
  public:
    PlainTokenizer(std::size_t bufferSize, qnxml::XmlStreamTokenizer::Stream stream)
        : source_(bufferSize, std::move(stream)) {}

    qnxml::XmlLocation location() const override { return source_.location(); }

  protected:
    int get_next_char(char* out) override {
        const int length = source_.get_next_char(out);
        if (length < 0) {
            stream_failure("Invalid UTF-8 character in stream", {}, source_.last_error()->nested());
        }
        return length;
    }

  private:
    struct Source final : qnxml::XmlStreamTokenizer {
        Source(std::size_t bufferSize, Stream stream)
            : XmlStreamTokenizer({}, 1, bufferSize, std::move(stream)) {}
        using XmlStreamTokenizer::get_next_char;
    };

    Source source_;
};

/// All tokens with all that can be asked about them, up to the end.
std::string tokens_of(qnxml::IXmlTokenizer& tokenizer) {
    std::ostringstream all;
    qnxml::XmlTokenType token{};
    while (token != qnxml::XmlTokenType::DocumentEnd && token != qnxml::XmlTokenType::Error) {
        token = tokenizer.next_token();
        const qnxml::XmlLocation at = tokenizer.location();
        all << token << '(' << tokenizer.token_text().view() << ')' << tokenizer.attribute_quote()
            << '@' << at.line << ',' << at.linePos << ',' << at.sourcePos << '\n';
    }
    if (tokenizer.last_error()) {
        all << tokenizer.last_error()->text();
    }
    return all.str();
}

void compare_tokens(const std::string& document, std::size_t bufferSize) {
    const auto stream = [&document] {
        return qnxml::XmlStreamTokenizer::Stream(new support::MemoryReadStream(document));
    };
    qnxml::XmlStreamTokenizer with({}, 1, bufferSize, stream());
    PlainTokenizer without(bufferSize, stream());
    fuzz::require(tokens_of(with) == tokens_of(without), "bytes at hand make no difference");
}

/// What expat's handlers add to.
struct ExpatRun {
    XML_Parser parser = XML_ParserCreateNS("UTF-8", '|');
    std::string events;

    ExpatRun() = default;
    ExpatRun(const ExpatRun&) = delete;
    ExpatRun& operator=(const ExpatRun&) = delete;
    ~ExpatRun() { XML_ParserFree(parser); }

    static void add(void* run, const std::string& event) {
        static_cast<ExpatRun*>(run)->events += event;
    }
};

void start_by_expat(void* run, const XML_Char* name, const XML_Char** attributes) {
    std::string event = event_mark + (std::string("<") + name);
    for (; *attributes != nullptr; attributes += 2) {
        event += event_mark + (std::string(attributes[0]) + "=" + attributes[1]);
    }
    ExpatRun::add(run, event + event_mark);
}

/// Gives up a document with data that ends in "?".
void instruction_by_expat(void* run, const XML_Char* target, const XML_Char* data) {
    ExpatRun::add(run, event_mark + (std::string("?") + target));
    if (std::string_view(data).ends_with('?')) {
        XML_StopParser(static_cast<ExpatRun*>(run)->parser, XML_FALSE);
    }
}

/// Gives up a document whose DOCTYPE says more than a name.
void doctype_by_expat(void* run, const XML_Char* /*name*/, const XML_Char* systemId,
                      const XML_Char* publicId, int hasInternalSubset) {
    if (systemId != nullptr || publicId != nullptr || hasInternalSubset != 0) {
        XML_StopParser(static_cast<ExpatRun*>(run)->parser, XML_FALSE);
    }
}

/// The events, for a document that expat accepts and that is to be compared.
std::optional<std::string> events_by_expat(const std::string& document) {
    ExpatRun run;
    XML_SetUserData(run.parser, &run);
    XML_SetElementHandler(run.parser, start_by_expat, [](void* data, const XML_Char* name) {
        ExpatRun::add(data, event_mark + (std::string("/") + name));
    });
    XML_SetCharacterDataHandler(run.parser, [](void* data, const XML_Char* text, int length) {
        ExpatRun::add(data, {text, static_cast<std::size_t>(length)});
    });
    XML_SetCommentHandler(run.parser, [](void* data, const XML_Char* text) {
        ExpatRun::add(data, event_mark + (std::string("!") + text) + event_mark);
    });
    XML_SetProcessingInstructionHandler(run.parser, instruction_by_expat);
    XML_SetStartDoctypeDeclHandler(run.parser, doctype_by_expat);
    const auto status =
        XML_Parse(run.parser, document.data(), static_cast<int>(document.size()), 1);
    return status == XML_STATUS_OK ? std::optional(run.events) : std::nullopt;
}

/// Whether the data may end inside a line end or inside a character, which has six bytes at most.
bool may_end_inside_a_character(const std::string& document) {
    const std::string_view tail = std::string_view(document).substr(
        document.size() - std::min<std::size_t>(document.size(), 5));
    return tail.ends_with('\r') || std::any_of(tail.begin(), tail.end(), [](char byte) {
               return (static_cast<unsigned char>(byte) & 0x80) != 0;
           });
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string document(data, data + size);
    compare_tokens(document, 32 + size % 64);
    compare_tokens(document, 4096);
    const Report report = report_by_reader(document, 4096);
    const Report in_small_fills = report_by_reader(document, 32);
    if (may_end_inside_a_character(document)) {
        return 0;
    }
    fuzz::require(report == in_small_fills,
                  "the size of the fills makes no difference\n" + report.events + "! " +
                      report.error + "\n" + in_small_fills.events + "! " + in_small_fills.error);
    const std::optional<std::string> expected = events_by_expat(document);
    if (!expected) {
        return 0;
    }
    const auto tells = [&](std::string_view words) {
        return report.error.find(words) != std::string::npos;
    };
    if (report.error.empty() || std::none_of(std::begin(refusals), std::end(refusals), tells)) {
        fuzz::require(report == Report{*expected, ""}, "the reader reports what expat reports\n" +
                                                           report.events + "! " + report.error +
                                                           "\n" + *expected);
    }
    return 0;
}
