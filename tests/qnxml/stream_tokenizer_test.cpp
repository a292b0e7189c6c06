// Buffers, line ends, positions and failures of the source.
#include <gmock/gmock.h>

#include "qnuri/parse.h"
#include "qnxml/errors.h"
#include "tests/qnxml/documents.h"

namespace {

using qnxml::XmlTokenType;
using qnxml_test::failure_in;
using qnxml_test::memory_stream;
using qnxml_test::Tokenizer;

Tokenizer::Stream stream_of(const support::MemoryReadStream::Source& source) {
    return Tokenizer::Stream(new support::MemoryReadStream(source));
}

/// Each token after the first one with its text and the position after it; at most `most` tokens.
std::string positions(Tokenizer::Stream stream, std::size_t buffer_size = 32,
                      std::size_t most = 100) {
    Tokenizer tokenizer({}, 1, buffer_size, std::move(stream));
    std::ostringstream all;
    qnxml_test::for_each_token(
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
    }
}

} // namespace
