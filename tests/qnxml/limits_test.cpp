// Limits of sizes, depths and memory.
#include <gmock/gmock.h>

#include "tests/qnxml/documents.h"
#include "tests/support/allocations.h"

namespace {

using qnxml::XmlNodeType;
using qnxml_test::failure_of;
using qnxml_test::ScriptedToken;
using qnxml_test::ScriptedTokenizer;

TEST(Limits, StopValuesOfMoreThan128MiB) {
    using T = qnxml::XmlTokenType;
    constexpr std::size_t limit = 0x8000000;
    std::string bytes(limit + 2, ' ');
    bytes[0] = 'x';
    const std::string_view text(bytes.data(), limit);
    const std::string_view more(bytes.data(), limit + 1);
    const std::string_view blanks(bytes.data() + 1, limit + 1);
    const std::string_view half = blanks.substr(limit / 2);
    const std::vector<ScriptedToken> scripts[] = {
        {{T::CharData, "x"}, {T::CharData, text}},
        {T::CommentStart, {T::CharData, more}},
        {T::StartTagStart, T::AttributeStart, {T::CharData, more}},
        {T::StartTagStart, T::StartTagEnd, {T::CharData, more}},
        {T::StartTagStart, T::StartTagEnd, {T::CharData, blanks}},
        {T::StartTagStart, T::StartTagEnd, {T::CharData, text}, {T::CharRef, "65"}},
        {T::StartTagStart, T::StartTagEnd, {T::CharData, text}, {T::EntityRef, "lt"}},
        {T::StartTagStart, T::StartTagEndEmpty, {T::CharData, half}, {T::CharData, half}},
        // The sum of two nodes.
        {T::StartTagStart,
         T::StartTagEnd,
         {T::CharData, text},
         T::CDATAStart,
         T::CharData,
         T::CDATAEnd},
    };
    for (const std::vector<ScriptedToken>& script : scripts) {
        SCOPED_TRACE(&script - scripts);
        ScriptedTokenizer tokenizer(script);
        qnxml::XmlReader reader(&tokenizer);
        reader.set_skip_whitespace(false);
        EXPECT_EQ(failure_of([&] {
                      while (reader.read_next()) {
                          reader.value();
                          reader.read_element_text();
                      }
                  }),
                  "error.qnxml.reader.unexpected.size qnxml::XmlReader::throw_string_size_error() "
                  "Node value exceeds 134217728bytes of character data");
    }
    // A resolver's text is not limited.
    ScriptedTokenizer tokenizer({T::StartTagStart,
                                 T::StartTagEnd,
                                 {T::CharData, text},
                                 {T::EntityRef, "markup"},
                                 T::EndTag});
    qnxml_test::Resolver resolver;
    qnxml::XmlReader reader(&tokenizer, &resolver);
    ASSERT_TRUE(reader.next_element());
    EXPECT_EQ(reader.read_element_text().size(), limit + 6);
}

TEST(Limits, LeaveMemoryAloneInTheSteadyState) {
    const std::string entry = "<n:entry xmlns:n='urn:one' first='a value too long for no memory' "
                              "second='&lt;two&gt;'><n:path>C:\\Keys\\a&amp;b.crt</n:path> "
                              "<!-- comment --><?target data?><![CDATA[ more ]]></n:entry>\n";
    std::string text = "<r>";
    for (int i = 0; i < 2000; ++i) {
        text += entry;
    }
    qnxml_test::Document document(text + "</r>");
    qnxml::XmlReader& reader = document.reader;
    std::size_t after_some = 0;
    std::size_t elements = 0;
    while (reader.read_next()) {
        if (reader.node_type() == XmlNodeType::Element && ++elements == 100) {
            after_some = support::allocations();
        }
        reader.value();
    }
    EXPECT_EQ(elements, 4001U);
    EXPECT_EQ(support::allocations(), after_some);
}

TEST(Limits, KeepFewFreeElements) {
    std::string tower = "<a></a>";
    while (tower.size() < 7000) {
        tower = "<a>" + tower + "</a>";
    }
    qnxml_test::Document document("<r>" + tower + tower + "</r>");
    std::size_t elements = 0;
    std::size_t after_first = 0;
    while (document.reader.next_element()) {
        if (++elements == 1001) {
            after_first = support::allocations();
        }
    }
    EXPECT_EQ(elements, 2001U);
    EXPECT_GT(support::allocations() - after_first, 700U); // allocated anew, not kept
}

/// A cost that grew with the square of the length would take minutes here, and a recursion to the
/// depth of the document would overflow the stack.
TEST(Limits, AllowAnyDepthAtACostOfTheLengthOfTheDocument) {
    std::string nested = "<p:a xmlns:p='u'>";
    std::string distinct = "<a>";
    std::string attributes = "<a";
    for (int i = 0; i < 200000; ++i) {
        nested += "<p:b xmlns:q='v'>";
    }
    for (int i = 0; i < 40000; ++i) {
        const std::string number = std::to_string(i);
        distinct += "<n" + number + ":b xmlns:n" + number + "='v'>";
        attributes += " p:a" + number + "='' xmlns:n" + number + "='v'";
    }
    for (const std::string& text : {nested, distinct, attributes + " xmlns:p='u'>"}) {
        qnxml_test::Document document(text);
        qnxml::XmlReader::ElementPtr last;
        EXPECT_THAT(failure_of([&] {
                        while (document.reader.next_element()) {
                            last = document.reader.current_element();
                        }
                    }),
                    testing::HasSubstr("Unexpected end of document"));
    }
}

} // namespace
