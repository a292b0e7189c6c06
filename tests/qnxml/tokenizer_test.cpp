// Tokens, their texts, positions and failures; buffers, line ends and failures of the source.
#include <gmock/gmock.h>

#include "qnuri/parse.h"
#include "qnxml/byte_run.h"
#include "qnxml/char_classes.h"
#include "qnxml/errors.h"
#include "tests/qnxml/documents.h"

namespace {

using qnxml::XmlTokenType;
using qnxml_test::failure_in;
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

Tokenizer::Stream stream_of(const support::MemoryReadStream::Source& source) {
    return Tokenizer::Stream(new support::MemoryReadStream(source));
}

/// Each token after the first one with its text and the position after it; at most `most` tokens.
std::string positions(Tokenizer::Stream stream, std::size_t buffer_size = 32,
                      std::size_t most = 100) {
    Tokenizer tokenizer({}, 1, buffer_size, std::move(stream));
    std::ostringstream all;
    for_each_token(
        tokenizer,
        [&](XmlTokenType token) {
            const qnxml::XmlLocation at = tokenizer.location();
            all << ' ' << token << '(' << tokenizer.token_text().view() << ")@" << at.line << ','
                << at.linePos << ',' << at.sourcePos;
        },
        most);
    return all.str().substr(std::string_view(" DocumentStart()@1,0,0").size());
}

const qnuri::UriReference reference(qnuri::parse_uri_reference("file:a", false));

TEST(XmlLocation, EntersAMessage) {
    EXPECT_EQ(qnxml::location_message({}, "x", nullptr), "[line {@line}, pos {@linePos}]: x");
    const qnxml::XmlLocation location{reference, 2, 5, 9};
    qncore::ErrorParams params;
    EXPECT_EQ(qnxml::location_message(location, "Of {@name}", &params),
              "[line {@line}, pos {@linePos}, uri <{@uri}>]: Of {@name}");
    std::string all;
    for (const auto& [name, value] : params) {
        all += std::string(name.view()) + "=" + value + " ";
    }
    EXPECT_EQ(all, "line=2 linePos=5 sourcePos=9 uri=file:a ");
}

TEST(StreamTokenizer, KeepsThePosition) {
    EXPECT_EQ(positions(memory_stream("<a>\r\n\xC3\xA9\rb\n</a>"), 4096),
              " StartTagStart(a)@1,3,3 StartTagEnd()@1,3,3 CharData(\n\xC3\xA9\nb\n)@4,1,11"
              " EndTag(a)@4,4,14 DocumentEnd()@4,4,14");
    // The mark counts as bytes of the first line.
    EXPECT_THAT(positions(memory_stream("\xEF\xBB\xBF<a/>"), 4096),
                testing::HasSubstr("StartTagStart(a)@1,6,6"));
    Tokenizer tokenizer(reference, 7, 32, memory_stream("<!x"));
    EXPECT_TRUE(failure_in(tokenizer)->text().starts_with("[line 7, pos 3, uri <file:a>]: "));
}

TEST(StreamTokenizer, TakesAtLeast32Bytes) {
    std::vector<std::uint64_t> sizes;
    const auto source = [&](void*, std::uint64_t size) {
        sizes.push_back(size);
        return std::uint64_t{0};
    };
    for (const std::size_t requested : {0U, 1U, 33U}) {
        positions(stream_of(source), requested);
    }
    EXPECT_THAT(sizes, testing::ElementsAre(32, 32, 33));
    EXPECT_EQ(positions({}), " DocumentEnd()@1,0,0"); // no stream
}

TEST(StreamTokenizer, JoinsWhatAFillCuts) {
    // The 32nd byte is the CR, or the second of the four bytes of one character.
    const std::string head(31, 'a');
    EXPECT_EQ(positions(memory_stream(head + "\r\nb")),
              " CharData(" + head + "\nb)@2,1,34 DocumentEnd()@2,1,34");
    const std::string wide = head.substr(1) + "\xF0\x9F\x98\x80" + "b";
    for (const std::uint64_t largest_read : {32U, 1U}) {
        EXPECT_EQ(positions(memory_stream(wide, largest_read)),
                  " CharData(" + wide + ")@1,35,35 DocumentEnd()@1,35,35");
    }
}

TEST(StreamTokenizer, ReadsTheOldBufferOnceMoreAfterACutEnd) {
    const std::tuple<const char*, std::size_t, const char*> cases[] = {
        // A document, how many tokens of it are read, and their positions.
        {"\r", 9, " DocumentEnd()@1,1,1"},
        {"<a/>x\r", 6,
         " StartTagStart(a)@1,3,3 StartTagEndEmpty()@1,4,4 CharData(x)@1,6,6"
         " StartTagStart(a)@1,9,9 StartTagEndEmpty()@1,10,10"},
        {"<a>x\r", 9,
         " StartTagStart(a)@1,3,3 StartTagEnd()@1,3,3 CharData(x)@1,5,5"
         " StartTagStart(a)@1,8,8 StartTagEnd()@1,8,8 CharData(x)@1,10,10 DocumentEnd()@1,10,10"},
        // An end tag asks once more for the bracket that the CR hides.
        {">x</a \r", 4, " CharData(>x)@1,3,3 EndTag(a)@1,8,8 CharData(x)@1,10,10"},
        // A cut character is lost. What it leaves in the buffer is read if text was held.
        {"xyz\xE2\x82", 9, " CharData(xyz)@1,3,3 Error()@1,3,3"},
        {"\xE2\x82\xAC\xE2\x82", 9,
         " CharData(\xE2\x82\xAC)@1,3,3 CharData(\xE2\x82\xAC)@1,6,6 DocumentEnd()@1,6,6"},
    };
    for (const auto& [document, most, expected] : cases) {
        EXPECT_EQ(positions(memory_stream(document), 32, most), expected);
    }
}

TEST(StreamTokenizer, RefusesInvalidUtf8) {
    for (const char* bytes :
         {"\x80zzz", "\xC0\x80zz", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xFEzzzzz", "\xFFzzzzz",
          "\xF8\x88\x80\x80\x80", "\xE4\xB8z", "\xC3("}) {
        Tokenizer tokenizer({}, 1, 64, memory_stream("<a>\n" + std::string(bytes)));
        const qncore::ErrorInfoPtr error = failure_in(tokenizer);
        ASSERT_TRUE(error && error->nested()) << testing::PrintToString(bytes);
        EXPECT_EQ(error->text(), "[line 2, pos 0]: Invalid UTF-8 character in stream");
        EXPECT_EQ(error->location().function.view(),
                  "qnxml::XmlBufferedStreamTokenizerBase::get_next_char()");
    }
    // The failure of the stream is reported inside markup, too, and not an end of the data.
    for (const char* open :
         {"<",          "<!",          "<!-",       "<!--",  "<!-- -", "<!-- --", "<![CDATA[",
          "<![CDATA[]", "<![CDATA[]]", "<!DOCTYPE", "<?a ",  "<?a ?",  "<a",      "<a ",
          "<a /",       "<a b",        "<a b ",     "<a b=", "<a b='", "<?xml ",  "<?xml ?",
          "</a",        "</a ",        "&",         "&#",    "&#6",    "&#x",     "&a"}) {
        Tokenizer tokenizer({}, 1, 32, memory_stream(open + std::string("\xFF______")));
        ASSERT_TRUE(failure_in(tokenizer)) << open;
        EXPECT_EQ(tokenizer.last_error()->code(), qnxml::error::qnxml_tokenizer_stream) << open;
    }
}

TEST(StreamTokenizer, CarriesTheStreamsFailure) {
    const support::MemoryReadStream::Source ends[] = {
        [](void*, std::uint64_t) -> std::uint64_t {
            qncore::throw_error(qnxml::error::qnxml, "gone", QN_LOCATION("source()"));
        },
        [](void*, std::uint64_t) -> std::uint64_t { throw std::runtime_error("gone"); },
        [](void*, std::uint64_t size) { return size + 1; }, // more than there is room for
    };
    for (const auto& end : ends) {
        int reads = 0;
        Tokenizer tokenizer({}, 1, 32, stream_of([&](void* buffer, std::uint64_t size) {
                                std::fill_n(static_cast<char*>(buffer), size, 'x');
                                return ++reads == 3 ? end(buffer, size) : size;
                            }));
        const qncore::ErrorInfoPtr error = failure_in(tokenizer);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->text(), "[line 1, pos 64]: Error reading from stream");
        EXPECT_EQ(error->code(), qnxml::error::qnxml_tokenizer_stream);
        EXPECT_EQ(error->nested() && error->nested()->text() == "gone", &end != &ends[2]);
        EXPECT_EQ(tokenizer.next_token(), XmlTokenType::Error) << "the source would go on";
    }
}

} // namespace
