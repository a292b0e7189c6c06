// Positions in messages, names of encodings, escaping for writers.
#include <cstring>

#include <gmock/gmock.h>

#include "qnuri/parse.h"
#include "qnxml/encoding_names.h"
#include "qnxml/escape.h"
#include "qnxml/xml_location.h"
#include "tests/support/memory_stream.h"

namespace {

TEST(XmlLocation, EntersAMessage) {
    qnxml::XmlLocation location{{}, 2, 5, 9};
    EXPECT_EQ(qnxml::format_location(location, "Expecting '='"), "[line 2, pos 5]: Expecting '='");
    location.uri = qnuri::UriReference(qnuri::parse_uri_reference("file:a", false));
    EXPECT_EQ(qnxml::format_location(location, "Expecting '='"),
              "[line 2, pos 5, uri <file:a>]: Expecting '='");

    qncore::ErrorParams params;
    EXPECT_EQ(qnxml::location_message(location, "Of {@name}", &params),
              "[line {@line}, pos {@linePos}, uri <{@uri}>]: Of {@name}");
    EXPECT_EQ(qnxml::location_message({}, "x", nullptr), "[line {@line}, pos {@linePos}]: x");
    std::string all;
    for (const auto& [name, value] : params) {
        all += std::string(name.view()) + "=" + value + " ";
    }
    EXPECT_EQ(all, "line=2 linePos=5 sourcePos=9 uri=file:a ");
    EXPECT_EQ(*qnxml::location_params(location).find("sourcePos"), "9");
}

TEST(EncodingNames, AreComparedLoosely) {
    const struct {
        const char* first;
        const char* second;
        bool equal;
    } cases[] = {
        {"", "", true},
        {"", "--", true},
        {"", "a", false},
        {"UTF-8", "utf8", true},
        {"utf-08", "utf8", true},
        {"utf-0008", "UTF_8", true},
        {"UTF_16", "utf16", true},
        {"utf-8", "utf-16", false},
        {"utf8", "utf", false},
        {"utf-80", "utf-8", true}, // the same "8" passes on the short cut
        {"utf10", "utf1", true},
        {"utf_10", "utf-1", false}, // the different bytes before it do not
        {"iso-8859-1", "ISO-8859-01", true},
        {"iso-8859-1", "ISO_8859-01", false}, // nor does the same "-" end a number
        {"iso-8859-1", "iso-8859-2", false},
        {"a10", "b10", false},
        {"x-10", "x10", true},
        {"x-100", "x_1-00", true},
        {"x-20", "x.2a", false},
    };
    for (const auto& test : cases) {
        for (const auto& [left, right] :
             {std::pair(test.first, test.second), std::pair(test.second, test.first)}) {
            EXPECT_EQ(
                qnxml::encoding_names_equal(left, std::strlen(left), right, std::strlen(right)),
                test.equal)
                << left << ' ' << right;
        }
    }
}

TEST(Escape, WritesReferencesForWhatNeedsThem) {
    const struct {
        std::string text;
        const char* as_attribute;
        const char* as_text;
    } cases[] = {
        {"", "", ""},
        {"plain", "plain", "plain"},
        {"a<b>&", "a&lt;b>&amp;", "a&lt;b&gt;&amp;"},
        {"\"'", "&quot;'", "\"'"},
        {"&amp;", "&amp;amp;", "&amp;amp;"},
        {"\xC3\xA9<\n", "\xC3\xA9&lt;\n", "\xC3\xA9&lt;\n"},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(qnxml::escape_attribute_value(test.text), test.as_attribute);
        EXPECT_EQ(qnxml::escape_text(test.text), test.as_text);
        support::MemoryWriteStream attribute;
        qnxml::write_attribute(attribute, "p:n", test.text);
        EXPECT_EQ(attribute.text, " p:n=\"" + std::string(test.as_attribute) + "\"");
        support::MemoryWriteStream text;
        qnxml::write_escaped_text(text, test.text);
        EXPECT_EQ(text.text, test.as_text);
    }
    support::MemoryWriteStream runs;
    qnxml::write_escaped_text(runs, "abc<def");
    EXPECT_THAT(runs.writes, testing::ElementsAre(3, 4, 3));
}

} // namespace
