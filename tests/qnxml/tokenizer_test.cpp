// Tokens, their texts and the failures of the tokenizer.
#include <gmock/gmock.h>

#include "qnxml/byte_run.h"
#include "qnxml/char_classes.h"
#include "qnxml/errors.h"
#include "tests/qnxml/tokenizers.h"

namespace {

using qnxml::XmlTokenType;
using qnxml_test::for_each_token;
using qnxml_test::memory_stream;
using testing::ElementsAre;

/// The tokens after "DocumentStart" and before "DocumentEnd" with their texts in parentheses; a
/// failure as its message without the position.
std::string tokens(std::string_view document) {
    qnxml_test::Tokenizer tokenizer({}, 1, 4096, memory_stream(document));
    std::ostringstream all;
    for_each_token(tokenizer, [&](XmlTokenType token) {
        const std::string_view text = tokenizer.token_text().view();
        if (token == XmlTokenType::Error) {
            const std::string message = tokenizer.last_error()->text();
            all << " ! " << message.substr(message.find("]: ") + 3);
        } else if (token != XmlTokenType::DocumentStart && token != XmlTokenType::DocumentEnd) {
            all << ' ' << token;
            const bool meaningless = token == XmlTokenType::CommentEnd ||
                                     token == XmlTokenType::PIEnd ||
                                     token == XmlTokenType::CDATAEnd;
            text.empty() || meaningless ? all : all << '(' << text << ')';
        }
    });
    return all.str().empty() ? "" : all.str().substr(1);
}

struct Case {
    std::string_view document;
    std::string expected;
};

TEST(Tokenizer, TurnsDocumentsIntoTokens) {
    const Case cases[] = {
        {"", ""},
        {"<?xml version='1.0'?>", "XmldeclStart(xml) AttributeStart(version) CharData(1.0) "
                                  "AttributeEnd XmldeclEnd"},
        {"<?xml?>", "XmldeclStart(xml) XmldeclEnd"},
        {"<?XML a?>", "PIStart(XML) CharData( a) PIEnd"},
        {"<?a?>", "PIStart(a) PIEnd"},
        {"<?a b?c?>", "PIStart(a) CharData( bc) PIEnd"},
        {"<?a ?\?>b?>", "PIStart(a) CharData( \?>b) PIEnd"},
        {"<!---->", "CommentStart CommentEnd"},
        {"<!-- - -->", "CommentStart CharData( - ) CommentEnd"},
        {"<!-a-->-->", "CommentStart CharData(->) CommentEnd"},
        {"<![CDATA[]]>", "CDATAStart CDATAEnd"},
        {"<![CDATA[]]]>", "CDATAStart CharData(]) CDATAEnd"},
        {"<![CDATA[a]b]]c]]]>", "CDATAStart CharData(a]b]]c]) CDATAEnd"},
        {"<![CDATA[<&>\"]]>", "CDATAStart CharData(<&>\") CDATAEnd"},
        {"<!DOCTYPE a [ <!ENTITY b \"c\"> ]>",
         "DoctypeStart CharData( a [ <!ENTITY b \"c\"> ]) DoctypeEnd"},
        {"<!DOCTYPE>", "DoctypeStart DoctypeEnd"},
        {"<!DOCTYPE a '>'>", "DoctypeStart CharData( a ') DoctypeEnd CharData('>)"},
        {"<a/>", "StartTagStart(a) StartTagEndEmpty"},
        {"<a /  trash >", "StartTagStart(a) StartTagEndEmpty"},
        {"<?xml version=\"1.0\"? trash>",
         "XmldeclStart(xml) AttributeStart(version) CharData(1.0) AttributeEnd XmldeclEnd"},
        {"<a\n\t >x</a >", "StartTagStart(a) StartTagEnd CharData(x) EndTag(a)"},
        {"<.a/>", "StartTagStart(.a) StartTagEndEmpty"},
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
    for (const Case& test : cases) {
        EXPECT_EQ(tokens(test.document), test.expected) << test.document;
    }
}

struct Failure {
    std::string_view document;
    const char* function;
    const char* message;
};

const Failure failures[] = {
    {"<", "parse_content", "End of data in markup"},
    {"<!", "parse_content", "End of data in markup"},
    {"<!-", "parse_content", "Expecting '--', '[CDATA[', or 'DOCTYPE' after '<!'"},
    {"<!x", "parse_content", "Expecting '--', '[CDATA[', or 'DOCTYPE' after '<!'"},
    {"<!doctype a>", "parse_content", "Expecting '--', '[CDATA[', or 'DOCTYPE' after '<!'"},
    {"<? a?>", "read_name", "Expecting processing instruction target name"},
    {"</ a>", "read_name", "Expecting end tag name"},
    {"</a", "read_name", "End of XML data in markup name"},
    {"</a b>", "parse_content", "Invalid character in end tag"},
    {"</a ", "parse_content", "Invalid character in end tag"},
    {"<:a/>", "read_name", "Expecting start tag name"},
    {"<-a/>", "read_name", "Expecting start tag name"},
    {"<1/>", "read_name", "Expecting start tag name"},
    {"<a\xC3\x97/>", "read_name", "Expecting start tag name"},
    {"<?1a?>", "read_name", "Expecting processing instruction target name"},
    {"</1a>", "read_name", "Expecting end tag name"},
    {"<\xC2\xB7/>", "read_name", "Expecting start tag name"},
    {"<a ", "parse_starttag", "End of data in start tag declaration"},
    {"<a /", "parse_starttag", "Invalid empty tag; expecting '/>'"},
    {"<a b='1'c='2'/>", "parse_starttag", "Expecting whitespace before attribute name"},
    {"<a =", "read_name", "Expecting attribute name"},
    {"<a b/>", "read_name", "Expecting attribute name"},
    {"<a b ", "parse_attrname", "End of data in attribute"},
    {"<a b= ", "parse_attrname", "End of data in attribute"},
    {"<a b c='1'/>", "parse_attrname", "Expecting '='"},
    {"<a b=1/>", "parse_attrname", "Expecting '\"' or ''' to start attribute value"},
    {"<a b='", "parse_attrvalue", "End of data in attribute value"},
    {"<a b='x<'/>", "parse_attrvalue", "Invalid character ('<') in attribute value"},
    {"<?xml ", "parse_xmldecl", "End of data in XML declaration"},
    {"<?xml a='1'?", "parse_xmldecl", "Invalid XML declaration, expecting '?>'"},
    {"<?xml a='1'b='2'?>", "parse_xmldecl", "Expecting whitespace before attribute name"},
    {"<!DOCTYPE a <>", "parse_doctype", "End of data in DOCTYPE"},
    {"<!-- a", "parse_comment", "End of data in comment"},
    {"<!-- a-", "parse_comment", "End of data in comment"},
    {"<!-- a--", "parse_comment", "End of data in comment"},
    {"<!-- a -- b -->", "parse_comment", "Sequence '--' is invalid in comment"},
    {"<!-- a --->", "parse_comment", "Sequence '--' is invalid in comment"},
    {"<?a b", "parse_pi", "End of data in processing instruction"},
    {"<?a b?", "parse_pi", "End of data in processing instruction"},
    {"<![CDATA[a", "parse_cdata", "End of data in CDATA"},
    {"<![CDATA[a]", "parse_cdata", "End of data in CDATA"},
    {"<![CDATA[a]]", "parse_cdata", "End of data in CDATA"},
    {"&", "parse_reference", "End of data in entity or character reference"},
    {"&#", "parse_reference", "End of data in entity or character reference"},
    {"&#;", "parse_reference", "Invalid decimal character reference"},
    {"&#X41;", "parse_reference", "Invalid decimal character reference"},
    {"&#12345678901;", "parse_reference", "Invalid decimal character reference"},
    {"&#x;", "parse_reference", "Invalid hex character reference"},
    {"&#x123456789;", "parse_reference", "Invalid hex character reference"},
    {"&;", "read_name", "Expecting entity reference name"},
    {"&amp ", "read_name", "Expecting entity reference name"},
    {"&#65", "parse_reference", "Invalid entity reference, expecting ';'"},
    {"&#65\xC3\xA9", "parse_reference", "Invalid entity reference, expecting ';'"},
};

TEST(Tokenizer, FailsWithMessagePlaceAndCode) {
    for (const Failure& test : failures) {
        qnxml_test::Tokenizer tokenizer({}, 1, 4096, memory_stream(test.document));
        XmlTokenType last{};
        for_each_token(tokenizer, [&](XmlTokenType token) { last = token; });
        ASSERT_EQ(last, XmlTokenType::Error) << test.document;
        const qncore::ErrorInfoPtr error = tokenizer.last_error();
        EXPECT_EQ(error->code(), qnxml::error::qnxml_tokenizer_syntaxError) << test.document;
        EXPECT_EQ(error->text(), qnxml::format_location(tokenizer.location(), test.message));
        EXPECT_EQ(error->location().function.view(),
                  std::string("qnxml::XmlCharStreamTokenizerBase::") + test.function + "()")
            << test.document;
        EXPECT_TRUE(tokenizer.token_text().empty()) << test.document;

        EXPECT_EQ(tokenizer.next_token(), XmlTokenType::Error);
        EXPECT_THAT(tokenizer.last_error()->text(),
                    testing::EndsWith("]: Cannot continue after error"));
    }
}

TEST(Tokenizer, FailsPastTheEndForGood) {
    qnxml_test::Tokenizer tokenizer({}, 1, 1, memory_stream(""));
    EXPECT_EQ(tokenizer.next_token(), XmlTokenType::DocumentStart);
    EXPECT_EQ(tokenizer.next_token(), XmlTokenType::DocumentEnd);
    EXPECT_EQ(tokenizer.last_error(), nullptr);
    EXPECT_EQ(tokenizer.next_token(), XmlTokenType::Error);
    EXPECT_EQ(tokenizer.last_error()->text(), "[line 1, pos 0]: Read past end");
    EXPECT_EQ(tokenizer.next_token(), XmlTokenType::Error);
    EXPECT_EQ(tokenizer.last_error()->text(), "[line 1, pos 0]: Cannot continue after error");
}

/// The sizes of all "CharData" of a document.
std::vector<std::size_t> chunk_sizes(std::string_view document) {
    qnxml_test::Tokenizer tokenizer({}, 1, 4096, memory_stream(document));
    std::vector<std::size_t> sizes;
    for_each_token(tokenizer, [&](XmlTokenType token) {
        if (token == XmlTokenType::CharData) {
            sizes.push_back(tokenizer.token_text().size());
        }
    });
    return sizes;
}

std::string repeated(std::string_view text, int times) {
    std::string all;
    while (times-- > 0) {
        all += text;
    }
    return all;
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
    EXPECT_THAT(chunk_sizes(std::string(1018, 'x')), ElementsAre(1018));
    EXPECT_THAT(chunk_sizes(repeated("\xE4\xB8\x80", 400)), ElementsAre(1020, 180));
    EXPECT_THAT(chunk_sizes(std::string(1017, 'x') + "\xF0\x9F\x98\x80y"), ElementsAre(1021, 1));
    // A row of brackets is one step, however long.
    EXPECT_THAT(chunk_sizes("<![CDATA[" + std::string(3000, ']') + "x]]>"), ElementsAre(3001));
    EXPECT_EQ(tokens("<" + std::string(5000, 'n') + "/>").size(),
              std::string("StartTagStart() StartTagEndEmpty").size() + 5000);
}

/// A source of single bytes that is not UTF-8.
class Latin1Tokenizer final : public qnxml::XmlCharStreamTokenizerBase {
  public:
    qnxml::XmlLocation location() const override { return {}; }

  protected:
    int get_next_char(char* out) override {
        *out = rest_[0];
        rest_.remove_prefix(*out != '\0' ? 1 : 0);
        return *out != '\0' ? 1 : 0;
    }

  private:
    std::string_view rest_ = "<\xE9\xB7/>";
};

TEST(Tokenizer, ClassifiesASingleByteByItself) {
    Latin1Tokenizer tokenizer;
    for_each_token(
        tokenizer, [](XmlTokenType) {}, 2);
    EXPECT_EQ(tokenizer.token_text().view(), "\xE9\xB7");
}

TEST(Tokenizer, PrintsUnknownTokensInDecimal) {
    std::ostringstream out;
    out << std::hex << static_cast<XmlTokenType>(23);
    EXPECT_EQ(out.str(), "##UNKNOWN(23)##");
}

TEST(CharClasses, FollowTheProductions) {
    const std::pair<std::uint32_t, std::uint32_t> cases[] = {
        {8, 0},        {13, 0x20}, {'-', 0x1000},  {'.', 0x2000}, {':', 0x4000},
        {'_', 0x8000}, {0xD7, 0},  {0x3007, 0x10}, {0x9FA6, 0},   {0xD7A3, 1},
        {0x10FFFF, 0}, {0x345, 4}, {0xE46, 8},     {0x660, 2},    {0xFFFFFFFF, 0},
    };
    for (const auto& [code_point, classes] : cases) {
        EXPECT_EQ(qnxml::char_class(code_point), classes) << std::hex << code_point;
    }
    // How many code points each production has.
    std::size_t counts[5] = {};
    for (std::uint32_t point = 0; point < 0x110000; ++point) {
        const std::uint32_t classes = qnxml::char_class(point);
        for (unsigned int bit = 0; bit < 5; ++bit) {
            counts[bit] += (classes >> bit) & 1;
        }
    }
    EXPECT_THAT(counts, ElementsAre(13602, 149, 437, 18, 20912));
}

constexpr qnxml::ByteSet letters = qnxml::ByteSet::ascii_where([](char byte) {
    return (qnxml::char_class(static_cast<unsigned char>(byte)) & qnxml::name_classes) != 0;
});
constexpr qnxml::ByteSet plain = qnxml::ByteSet::plain_but("&<");
constexpr qnxml::ByteSet one = qnxml::ByteSet::of("a");

template <const qnxml::ByteSet& set>
void check_runs(char member) {
    for (std::size_t length = 0; length < 40; ++length) {
        for (std::size_t place = 0; place < length; ++place) {
            for (int byte = 0; byte < 256; ++byte) {
                std::vector<char> text(length, member); // of its own length, for the sanitizer
                text[place] = static_cast<char>(byte);
                const char* const end = text.data() + length;
                const char* const expected =
                    std::find_if(static_cast<const char*>(text.data()), end,
                                 [](char each) { return !set.contains(each); });
                ASSERT_EQ(qnxml::impl::end_of_run<set>(text.data(), end), expected)
                    << length << ' ' << place << ' ' << byte;
            }
        }
    }
}

TEST(ByteRun, EndsWhereTheSetSays) {
    check_runs<letters>('a');
    check_runs<plain>('>');
    check_runs<one>('a');
}

} // namespace
