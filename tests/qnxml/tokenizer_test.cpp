// Tokens, their texts and the failures of the tokenizer.
#include <gmock/gmock.h>

#include "qnxml/byte_run.h"
#include "qnxml/char_classes.h"
#include "qnxml/errors.h"
#include "tests/qnxml/documents.h"

namespace {

using qnxml::XmlTokenType;
using qnxml_test::for_each_token;
using qnxml_test::memory_stream;
using qnxml_test::Tokenizer;
using testing::ElementsAre;

/// The tokens after "DocumentStart" with their texts in parentheses; for a failure its message. The
/// text of an end has no meaning.
std::string tokens(std::string_view document) {
    Tokenizer tokenizer({}, 1, 4096, memory_stream(document));
    std::ostringstream all;
    for_each_token(tokenizer, [&](XmlTokenType token) {
        const std::string_view text = tokenizer.token_text().view();
        std::ostringstream name;
        name << token;
        if (token == XmlTokenType::Error) {
            all << "! " << qnxml_test::without_position(tokenizer.last_error()->text()) << ' ';
        } else if (!name.str().starts_with("Document")) {
            all << name.str();
            text.empty() || name.str().ends_with("End") ? all << ' ' : all << '(' << text << ") ";
        }
    });
    return all.str();
}

TEST(Tokenizer, TurnsDocumentsIntoTokens) {
    const std::pair<std::string_view, std::string> cases[] = {
        {"<?xml version='1.0'?>", "XmldeclStart(xml) AttributeStart(version) CharData(1.0) "
                                  "AttributeEnd XmldeclEnd"},
        {"<?XML a?>", "PIStart(XML) CharData( a) PIEnd"},
        {"<?a b?c?>", "PIStart(a) CharData( bc) PIEnd"},
        {"<?a ?\?>b?>", "PIStart(a) CharData( \?>b) PIEnd"},
        {"<!-a-->-->", "CommentStart CharData(->) CommentEnd"},
        {"<![CDATA[a]b]]c]]]>", "CDATAStart CharData(a]b]]c]) CDATAEnd"},
        {"<!DOCTYPE a [ <!ENTITY b \"c\"> ]>",
         "DoctypeStart CharData( a [ <!ENTITY b \"c\"> ]) DoctypeEnd"},
        {"<!DOCTYPE a '>'>", "DoctypeStart CharData( a ') DoctypeEnd CharData('>)"},
        {"<a /  trash >", "StartTagStart(a) StartTagEndEmpty"},
        {"<?xml version=\"1.0\"? trash>",
         "XmldeclStart(xml) AttributeStart(version) CharData(1.0) AttributeEnd XmldeclEnd"},
        {"<_a-b:c:d.1/>", "StartTagStart(_a-b:c:d.1) StartTagEndEmpty"},
        {"<\xC3\xA9\xE4\xB8\x80\xC2\xB7/>",
         "StartTagStart(\xC3\xA9\xE4\xB8\x80\xC2\xB7) StartTagEndEmpty"},
        {"<a b = \"1\" c='\"'>", "StartTagStart(a) AttributeStart(b) CharData(1) AttributeEnd "
                                 "AttributeStart(c) CharData(\") AttributeEnd StartTagEnd"},
        {"<a b='x&lt;&#65;y>'/>",
         "StartTagStart(a) AttributeStart(b) CharData(x) EntityRef(lt) CharRef(65) CharData(y>) "
         "AttributeEnd StartTagEndEmpty"},
        {"a&#xAf;]]>", "CharData(a) CharRef(xAf) CharData(]]>)"},
        {"&#65 x", "CharRef(65) CharData(x)"},
        {"&#1234567890;&#x12345678;", "CharRef(1234567890) CharRef(x12345678)"},
        {std::string_view("<a\0b='1'/>", 10),
         "StartTagStart(a) ! Expecting whitespace before attribute name"},
        {std::string_view("&a\0x\1", 5), "EntityRef(a) CharData(x\1)"},
        {std::string_view("<?a\0?>", 6), std::string("PIStart(a) CharData(\0) PIEnd", 28)},
        {std::string_view("</a\0>", 5), "! Invalid character in end tag"},
        {std::string_view("<a b\0='1'>", 10), "StartTagStart(a) ! Expecting '='"},
        {"<?a\t?><?b\n?></a\t><c d\n='1'>",
         "PIStart(a) CharData(\t) PIEnd PIStart(b) CharData(\n) PIEnd EndTag(a) "
         "StartTagStart(c) AttributeStart(d) CharData(1) AttributeEnd StartTagEnd"},
    };
    for (const auto& [document, expected] : cases) {
        EXPECT_EQ(tokens(document), expected + " ") << document;
    }
}

/// Functions, and documents with which they fail.
const std::pair<const char*, std::vector<std::string_view>> failures[] = {
    {"parse_content", {"<", "<!", "<!-", "<!x", "<!doctype a>", "</a b>", "</a "}},
    {"read_name",
     {"<? a?>", "</ a>", "</a", "<:a/>", "<-a/>", "<1/>", "<a\xC3\x97/>", "<?1a?>", "</1a>",
      "<\xC2\xB7/>", "<a =", "<a b/>", "&;", "&amp "}},
    {"parse_starttag", {"<a ", "<a /", "<a b='1'c='2'/>"}},
    {"parse_attrname", {"<a b ", "<a b= ", "<a b c='1'/>", "<a b=1/>"}},
    {"parse_attrvalue", {"<a b='", "<a b='x<'/>"}},
    {"parse_xmldecl", {"<?xml ", "<?xml a='1'?", "<?xml a='1'b='2'?>"}},
    {"parse_doctype", {"<!DOCTYPE a <>"}},
    {"parse_comment", {"<!-- a", "<!-- a-", "<!-- a--", "<!-- a -- b -->", "<!-- a --->"}},
    {"parse_pi", {"<?a b", "<?a b?"}},
    {"parse_cdata", {"<![CDATA[a", "<![CDATA[a]", "<![CDATA[a]]"}},
    {"parse_reference",
     {"&", "&#", "&#;", "&#X41;", "&#12345678901;", "&#x;", "&#x123456789;", "&#65",
      "&#65\xC3\xA9"}},
};

TEST(Tokenizer, FailsWithPlaceAndCodeForGood) {
    for (const auto& [function, documents] : failures) {
        for (const std::string_view document : documents) {
            SCOPED_TRACE(document);
            Tokenizer tokenizer({}, 1, 4096, memory_stream(document));
            const qncore::ErrorInfoPtr error = qnxml_test::failure_in(tokenizer);
            ASSERT_TRUE(error);
            EXPECT_EQ(error->code(), qnxml::error::qnxml_tokenizer_syntaxError);
            EXPECT_THAT(error->text(),
                        testing::StartsWith(qnxml::format_location(tokenizer.location(), "")));
            EXPECT_EQ(error->location().function.view(),
                      std::string("qnxml::XmlCharStreamTokenizerBase::") + function + "()");
            EXPECT_TRUE(tokenizer.token_text().empty());
            EXPECT_EQ(tokenizer.next_token(), XmlTokenType::Error);
            EXPECT_THAT(tokenizer.last_error()->text(),
                        testing::EndsWith("]: Cannot continue after error"));
        }
    }
    Tokenizer empty({}, 1, 1, memory_stream(""));
    EXPECT_EQ(qnxml_test::failure_in(empty), nullptr);
    for (const char* message : {"Read past end", "Cannot continue after error"}) {
        EXPECT_EQ(empty.next_token(), XmlTokenType::Error);
        EXPECT_EQ(empty.last_error()->text(), qnxml::format_location(empty.location(), message));
    }
}

/// The sizes of all "CharData".
std::vector<std::size_t> chunk_sizes(std::string_view document) {
    Tokenizer tokenizer({}, 1, 4096, memory_stream(document));
    std::vector<std::size_t> sizes;
    for_each_token(tokenizer, [&](XmlTokenType token) {
        if (token == XmlTokenType::CharData) {
            sizes.push_back(tokenizer.token_text().size());
        }
    });
    return sizes;
}

TEST(Tokenizer, CutsTextIntoChunks) {
    const std::string run(2500, 'x');
    const std::pair<std::string, std::string> around[] = {{"", ""},        {"<!--", "-->"},
                                                          {"<?a ", "?>"},  {"<![CDATA[", "]]>"},
                                                          {"<a b='", "'"}, {"<!DOCTYPE ", ">"}};
    for (const auto& [open, close] : around) {
        const std::size_t blank = open.ends_with(' ') ? 1 : 0;
        EXPECT_THAT(chunk_sizes(open + run + close), ElementsAre(1018, 1018, 464 + blank)) << open;
    }
    EXPECT_THAT(chunk_sizes(std::string(1017, 'x') + "\xF0\x9F\x98\x80y"), ElementsAre(1021, 1));
    // A row of brackets is one step, however long.
    EXPECT_THAT(chunk_sizes("<![CDATA[" + std::string(3000, ']') + "x]]>"), ElementsAre(3001));
    const std::string name(5000, 'n'); // nor is a name cut
    EXPECT_EQ(tokens("<" + name + "/>"), "StartTagStart(" + name + ") StartTagEndEmpty ");
}

/// A source of single bytes that is not UTF-8.
struct Latin1Tokenizer final : qnxml::XmlCharStreamTokenizerBase {
    qnxml::XmlLocation location() const override { return {}; }
    int get_next_char(char* out) override {
        *out = *rest_;
        return *rest_ != '\0' ? (++rest_, 1) : 0;
    }
    const char* rest_ = "<\xE9\xB7/>";
};

TEST(Tokenizer, ClassifiesASingleByteByItself) {
    Latin1Tokenizer tokenizer;
    EXPECT_EQ(tokenizer.next_token(), XmlTokenType::DocumentStart);
    EXPECT_EQ(tokenizer.next_token(), XmlTokenType::StartTagStart);
    EXPECT_EQ(tokenizer.token_text().view(), "\xE9\xB7");
}

TEST(CharClasses, HaveAsManyCodePointsAsTheProductions) {
    std::size_t counts[5] = {};
    for (std::uint32_t point = 0; point < 0x110000; ++point) {
        const std::uint32_t classes = qnxml::char_class(point);
        for (unsigned int bit = 0; bit < 5; ++bit) {
            counts[bit] += (classes >> bit) & 1;
        }
    }
    EXPECT_THAT(counts, ElementsAre(13602, 149, 437, 18, 20912));
    EXPECT_EQ(qnxml::char_class(0xFFFFFFFF), 0U);
}

// The ranges of the other bytes have all forms: one byte, several, from the first, to the last.
constexpr qnxml::ByteSet name_bytes = qnxml::ByteSet::ascii_where([](char byte) {
    return (qnxml::char_class(static_cast<unsigned char>(byte)) & qnxml::name_classes) != 0;
});

TEST(ByteRun, EndsAtTheFirstOtherByte) {
    for (std::size_t length = 0; length < 40; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                std::vector<char> text(length, 'a'); // of its own length, for the sanitizer
                text[place] = static_cast<char>(byte);
                const std::size_t run = name_bytes.contains(text[place]) ? length : place;
                ASSERT_EQ(qnxml::impl::end_of_run<name_bytes>(text.data(), text.data() + length),
                          text.data() + run)
                    << length << ' ' << place << ' ' << byte;
            }
        }
    }
}

} // namespace
