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
    EXPECT_EQ(qnxml::location_message({}, "x", nullptr), "[line {@line}, pos {@linePos}]: x");
    location.uri = qnuri::UriReference(qnuri::parse_uri_reference("file:a", false));
    EXPECT_EQ(qnxml::format_location(location, "x"), "[line 2, pos 5, uri <file:a>]: x");

    qncore::ErrorParams params;
    EXPECT_EQ(qnxml::location_message(location, "Of {@name}", &params),
              "[line {@line}, pos {@linePos}, uri <{@uri}>]: Of {@name}");
    std::string all;
    for (const auto& [name, value] : params) {
        all += std::string(name.view()) + "=" + value + " ";
    }
    EXPECT_EQ(all, "line=2 linePos=5 sourcePos=9 uri=file:a ");
    EXPECT_EQ(*qnxml::location_params(location).find("sourcePos"), "9");
}

TEST(EncodingNames, AreComparedLoosely) {
    const std::pair<const char*, const char*> equal[] = {
        {"", ""},
        {"UTF-8", "utf8"},
        {"utf-0008", "UTF_8"},
        {"iso-8859-1", "ISO-8859-01"},
        {"x-100", "x_1-00"},
        {"utf-80", "utf-8"}, // the same "8" passes on the short cut
        {"utf10", "utf1"},
    };
    const std::pair<const char*, const char*> different[] = {
        {"", "a"},
        {"utf-8", "utf-16"},
        {"x-20", "x.2a"},
        {"utf_10", "utf-1"},           // the different bytes before it do not pass
        {"iso-8859-1", "ISO_8859-01"}, // nor does the same "-" end a number
    };
    const auto are_equal = [](const char* left, const char* right) {
        return qnxml::encoding_names_equal(left, std::strlen(left), right, std::strlen(right));
    };
    for (const auto& [left, right] : equal) {
        EXPECT_TRUE(are_equal(left, right) && are_equal(right, left)) << left << ' ' << right;
    }
    for (const auto& [left, right] : different) {
        EXPECT_FALSE(are_equal(left, right) || are_equal(right, left)) << left << ' ' << right;
    }
}

TEST(Escape, WritesReferencesForWhatNeedsThem) {
    const std::array<std::string, 3> cases[] = {
        // The text, as an attribute's value, as text.
        {"", "", ""},
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
    EXPECT_THAT(runs.writes, testing::ElementsAre(3, 4, 3));
}

} // namespace
