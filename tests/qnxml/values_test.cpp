// The ways to read a value, references, entity resolvers, escaping for writers.
#include <gmock/gmock.h>

#include "qnxml/escape.h"
#include "tests/qnxml/documents.h"

namespace {

using qnxml::XmlNodeType;
using qnxml_test::Document;
using qnxml_test::failure_of;
using testing::ElementsAre;
using testing::HasSubstr;

/// A document whose reader is on its first node of the type.
struct AtNode : Document {
    AtNode(std::string_view text, XmlNodeType type, qnxml::IEntityResolver* resolver = nullptr)
        : Document(text, resolver) {
        while (reader.node_type() != type && reader.read_next()) {
        }
        EXPECT_EQ(reader.node_type(), type) << text;
    }
};

std::string streamed(qncore::IReadStream& stream, std::size_t piece) {
    std::string text;
    std::string buffer(piece, '?');
    while (const std::uint64_t count = stream.read(buffer.data(), piece)) {
        text.append(buffer, 0, count);
    }
    return text;
}

/// Reads the value of the node, and compares it with the expected one.
using Way = void (*)(qnxml::XmlReader& reader, const std::string& expected);

const Way ways[] = {
    [](qnxml::XmlReader& reader, const std::string& expected) {
        EXPECT_EQ(reader.value(), expected);
        EXPECT_EQ(&reader.value(), &reader.value());
        EXPECT_EQ(reader.value_stream().available(), expected.size());
        EXPECT_EQ(streamed(reader.value_stream(), 100), expected);
    },
    [](qnxml::XmlReader& reader, const std::string& expected) {
        support::MemoryWriteStream out;
        reader.read_value_into_stream(out);
        EXPECT_EQ(out.text, expected);
    },
    [](qnxml::XmlReader& reader, const std::string& expected) {
        EXPECT_EQ(streamed(reader.value_stream(), 7), expected);
        EXPECT_EQ(reader.value_stream().available(), 0U);
    },
    [](qnxml::XmlReader& reader, const std::string& expected) {
        const std::uint64_t skipped = reader.value_stream().skip(1); // 0 of an empty value
        EXPECT_EQ(streamed(reader.value_stream(), 5000), expected.substr(skipped));
    },
    [](qnxml::XmlReader& reader, const std::string& expected) {
        EXPECT_EQ(reader.value_stream().skip(expected.size() / 2), expected.size() / 2);
    },
};

TEST(Values, AreTheSameByAllWaysAndTheRestFollows) {
    const std::string text = "  \n&lt;" + std::string(1500, 'x') + "&#233;" + std::string(60, 'y') +
                             "&amp;&amp;" + std::string(65, 'z') + " ";
    const std::string value = "  \n<" + std::string(1500, 'x') + "\xC3\xA9" + std::string(60, 'y') +
                              "&&" + std::string(65, 'z') + " ";
    const std::tuple<XmlNodeType, std::string, std::string> cases[] = {
        {XmlNodeType::Text, text, value},
        {XmlNodeType::Comment, "<!--" + value + "-->", value},
        {XmlNodeType::Comment, "<!---->", ""},
        {XmlNodeType::CDATA, "<![CDATA[" + value + "]]>", value},
        {XmlNodeType::EndElement, "", ""},
    };
    for (const auto& [type, content, expected] : cases) {
        for (const Way& way : ways) {
            SCOPED_TRACE(content + ", way " + std::to_string(&way - ways));
            AtNode document("<a>" + content + "</a>", type);
            way(document.reader, expected);
            while (document.reader.node_type() != XmlNodeType::EndElement) {
                ASSERT_TRUE(document.reader.read_next());
            }
            EXPECT_FALSE(document.reader.read_next());
        }
    }
}

// Required: a stream does not see the end of an instruction.
TEST(Values, OfInstructionsEndOnlyInTheBuffer) {
    for (const Way& way : {ways[0], ways[1]}) {
        AtNode whole("<a><?p data?></a>", XmlNodeType::PI);
        way(whole.reader, " data");
        EXPECT_EQ(qnxml_test::nodes(whole.reader), "EndElement a");
    }
    AtNode pieces("<a><?p data?></a>", XmlNodeType::PI);
    qncore::IReadStream& stream = pieces.reader.value_stream();
    EXPECT_EQ(stream.skip(5), 5U);
    EXPECT_EQ(failure_of([&] { stream.skip(1); }),
              "error.qnxml.reader.unexpected.token qnxml::XmlReader::stream_read_aux() "
              "Unexpected tokenizer token: PIEnd");
    EXPECT_EQ(failure_of([&] { stream.skip(1); }),
              "error.qnxml.reader qnxml::XmlReader:ValueReadStreamImpl::check_state() "
              "Value cannot be read after a parse error");
}

TEST(Values, GatherSmallPiecesBeforeTheyAreWritten) {
    const auto writes = [](const std::string& text) {
        AtNode node("<a>" + text + "</a>", XmlNodeType::Text);
        support::MemoryWriteStream out;
        node.reader.read_value_into_stream(out);
        return out.writes;
    };
    EXPECT_THAT(writes(std::string(2500, 'x') + "&lt;" + std::string(2500, 'y')),
                ElementsAre(1018, 1018, 464, 1, 1018, 1018, 464));
    EXPECT_THAT(writes(std::string(64, 'x') + "&lt;" + std::string(65, 'y')), ElementsAre(65, 65));
    const std::string piece = std::string(63, 'x') + "&gt;";
    EXPECT_THAT(writes(piece + piece + piece), ElementsAre(128, 64));
}

TEST(Values, AreReadOnce) {
    support::MemoryWriteStream out;
    AtNode written("<a>x</a>", XmlNodeType::Text);
    EXPECT_EQ(written.reader.value_stream().available(), ~std::uint64_t{0}); // unknown
    written.reader.value();
    written.reader.read_value_into_stream(out);
    EXPECT_EQ(out.text, "x");
    AtNode begun("<a>x</a>", XmlNodeType::Text);
    begun.reader.value_stream().skip(1);
    for (AtNode* const node : {&written, &begun}) {
        const auto write = [&] { node->reader.read_value_into_stream(out); };
        const std::string place = "error.qnxml.reader qnxml::XmlReader::read_value_into_stream() ";
        EXPECT_EQ(failure_of(write), place + "Value has already been read through stream, cannot "
                                             "create value buffer");
        EXPECT_EQ(failure_of(write), place + "Value cannot be read after a parse error");
    }
    AtNode read("<a>x</a>", XmlNodeType::Text);
    read.reader.value_stream().skip(1);
    EXPECT_THAT(failure_of([&] { read.reader.value(); }), HasSubstr("::read_value_into_buffer() "));
}

TEST(References, AskTheResolverOrFail) {
    qnxml_test::Resolver resolver;
    Document read("<a b='&markup;\n'>&empty;x&empty;&markup;</a>", &resolver);
    ASSERT_TRUE(read.reader.next_element());
    EXPECT_EQ(read.reader.current_element()->find_attribute("b")->value(), "<b>&x; ");
    ASSERT_TRUE(read.reader.read_next());
    EXPECT_EQ(streamed(read.reader.value_stream(), 2), "x<b>&x;");
    EXPECT_EQ(resolver.asked, "markup; empty; empty; markup; ");

    resolver.asked.clear();
    AtNode skipped("<a>&empty;&none;</a>", XmlNodeType::Text, &resolver);
    EXPECT_EQ(failure_of([&] { skipped.reader.read_next(); }),
              "error.qnxml.reader qnxml::XmlReader::resolve_entity_ref() "
              "Unable to resolve entity reference 'none'");
    EXPECT_EQ(resolver.asked, "empty?; none?; ");

    AtNode refused("<a>&#x00;</a>", XmlNodeType::Text);
    const auto error = qnxml_test::error_of([&] { refused.reader.value(); });
    // Required: the parameter's name lacks a letter.
    EXPECT_EQ(*error->params().find("charReferece"), "x00");
}

TEST(Escape, WritesReferencesForWhatNeedsThem) {
    const std::array<std::string, 3> cases[] = {
        // The text, as an attribute's value, as text.
        {"a<b>&", "a&lt;b>&amp;", "a&lt;b&gt;&amp;"},
        {"\"'", "&quot;'", "\"'"},
        {"\xC3\xA9<\n", "\xC3\xA9&lt;\n", "\xC3\xA9&lt;\n"},
    };
    for (const auto& [text, as_attribute, as_text] : cases) {
        EXPECT_EQ(qnxml::escape_attribute_value(text), as_attribute);
        EXPECT_EQ(qnxml::escape_text(text), as_text);
        support::MemoryWriteStream stream;
        qnxml::write_attribute(stream, "p:n", text);
        qnxml::write_escaped_text(stream, text);
        EXPECT_EQ(stream.text, " p:n=\"" + as_attribute + "\"" + as_text);
    }
    support::MemoryWriteStream runs;
    qnxml::write_escaped_text(runs, "abc<def");
    EXPECT_THAT(runs.writes, ElementsAre(3, 4, 3));
}

} // namespace
