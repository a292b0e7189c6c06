// Buffers, line ends, positions and failures of the source.
#include <gmock/gmock.h>

#include "qncore/error_exception.h"
#include "qnuri/parse.h"
#include "qnxml/errors.h"
#include "tests/qnxml/tokenizers.h"

namespace {

using qnxml::XmlTokenType;
using qnxml_test::for_each_token;
using qnxml_test::memory_stream;
using qnxml_test::Tokenizer;
using testing::ElementsAre;

using Source = std::function<std::uint64_t(void*, std::uint64_t)>;

Tokenizer::Stream stream_of(const Source& source) {
    return Tokenizer::Stream(new support::MemoryReadStream(source));
}

/// Each token with its text and the position after it; at most `most` tokens.
std::vector<std::string> lines_of(Tokenizer::Stream stream, std::size_t buffer_size,
                                  std::size_t most = 100) {
    Tokenizer tokenizer({}, 1, buffer_size, std::move(stream));
    std::vector<std::string> lines;
    for_each_token(
        tokenizer,
        [&](XmlTokenType token) {
            std::ostringstream line;
            const qnxml::XmlLocation at = tokenizer.location();
            line << token << '(' << tokenizer.token_text().view() << ") @" << at.line << ','
                 << at.linePos << ',' << at.sourcePos;
            lines.push_back(line.str());
        },
        most);
    return lines;
}

/// Reads to the end and returns the failure; null if there is none.
qncore::ErrorInfoPtr failure_of(Tokenizer& tokenizer) {
    for_each_token(tokenizer, [](XmlTokenType) {});
    return tokenizer.last_error();
}

TEST(StreamTokenizer, KeepsThePosition) {
    EXPECT_THAT(lines_of(memory_stream("<a>\r\n\xC3\xA9\rb\n</a>"), 4096),
                ElementsAre("DocumentStart() @1,0,0", "StartTagStart(a) @1,3,3",
                            "StartTagEnd() @1,3,3", "CharData(\n\xC3\xA9\nb\n) @4,1,11",
                            "EndTag(a) @4,4,14", "DocumentEnd() @4,4,14"));
    // The mark counts as bytes of the first line.
    EXPECT_THAT(lines_of(memory_stream("\xEF\xBB\xBF<a/>"), 4096),
                testing::Contains("StartTagStart(a) @1,6,6"));
    const qnuri::UriReference uri(qnuri::parse_uri_reference("file:a", false));
    Tokenizer tokenizer(uri, 7, 32, memory_stream("<!x"));
    EXPECT_TRUE(failure_of(tokenizer)->text().starts_with("[line 7, pos 3, uri <file:a>]: "));
}

TEST(StreamTokenizer, TakesAtLeast32Bytes) {
    std::vector<std::uint64_t> sizes;
    for (const std::size_t requested : {0U, 1U, 33U}) {
        lines_of(stream_of([&](void*, std::uint64_t size) {
                     sizes.push_back(size);
                     return std::uint64_t{0};
                 }),
                 requested);
    }
    EXPECT_THAT(sizes, ElementsAre(32, 32, 33));
    EXPECT_EQ(lines_of({}, 32).size(), 2U); // no stream
}

TEST(StreamTokenizer, JoinsWhatAFillCuts) {
    // The 32nd byte is the CR, or the second of the four bytes of one character.
    const std::string head(31, 'a');
    EXPECT_THAT(lines_of(memory_stream(head + "\r\nb"), 32),
                testing::Contains("CharData(" + head + "\nb) @2,1,34"));
    const std::string wide = head.substr(1) + "\xF0\x9F\x98\x80" + "b";
    EXPECT_THAT(lines_of(memory_stream(wide), 32),
                testing::Contains("CharData(" + wide + ") @1,35,35"));
    EXPECT_THAT(lines_of(memory_stream("<a>\xF0\x9F\x98\x80</a>", 1), 32),
                testing::Contains("CharData(\xF0\x9F\x98\x80) @1,8,8"));
}

TEST(StreamTokenizer, ReadsTheOldBufferAgainAfterAFinalCr) {
    EXPECT_THAT(lines_of(memory_stream("\r"), 32),
                ElementsAre("DocumentStart() @1,0,0", "DocumentEnd() @1,1,1"));
    EXPECT_THAT(lines_of(memory_stream("<a/>x\r"), 32, 6),
                ElementsAre("DocumentStart() @1,0,0", "StartTagStart(a) @1,3,3",
                            "StartTagEndEmpty() @1,4,4", "CharData(x) @1,6,6",
                            "StartTagStart(a) @1,9,9", "StartTagEndEmpty() @1,10,10"));
    // Once, so that a document that is cut there comes to its end.
    EXPECT_THAT(lines_of(memory_stream("<a>x\r"), 32),
                ElementsAre("DocumentStart() @1,0,0", "StartTagStart(a) @1,3,3",
                            "StartTagEnd() @1,3,3", "CharData(x) @1,5,5", "StartTagStart(a) @1,8,8",
                            "StartTagEnd() @1,8,8", "CharData(x) @1,10,10",
                            "DocumentEnd() @1,10,10"));
    // An end tag asks once more for the bracket that the CR hides.
    EXPECT_THAT(lines_of(memory_stream(">x</a \r"), 32, 4),
                ElementsAre("DocumentStart() @1,0,0", "CharData(>x) @1,3,3", "EndTag(a) @1,8,8",
                            "CharData(x) @1,10,10"));
    // A cut character is lost. What it leaves in the buffer is read if text was held, once.
    EXPECT_THAT(lines_of(memory_stream("\xE2\x82"), 32),
                ElementsAre("DocumentStart() @1,0,0", "DocumentEnd() @1,0,0"));
    EXPECT_EQ(lines_of(memory_stream("xyz\xE2\x82"), 32).back().substr(0, 7), "Error()");
    EXPECT_THAT(lines_of(memory_stream("\xE2\x82\xAC\xE2\x82"), 32),
                ElementsAre("DocumentStart() @1,0,0", "CharData(\xE2\x82\xAC) @1,3,3",
                            "CharData(\xE2\x82\xAC) @1,6,6", "DocumentEnd() @1,6,6"));
}

TEST(StreamTokenizer, RefusesInvalidUtf8) {
    for (const char* bytes :
         {"\x80zzz", "\xC0\x80zz", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xFEzzzzz", "\xFFzzzzz",
          "\xF8\x88\x80\x80\x80", "\xE4\xB8z", "\xC3("}) {
        Tokenizer tokenizer({}, 1, 64, memory_stream("<a>\n" + std::string(bytes)));
        const qncore::ErrorInfoPtr error = failure_of(tokenizer);
        ASSERT_TRUE(error) << testing::PrintToString(bytes);
        EXPECT_EQ(error->code(), qnxml::error::qnxml_tokenizer_stream);
        EXPECT_EQ(error->text(), "[line 2, pos 0]: Invalid UTF-8 character in stream");
        EXPECT_EQ(error->location().function.view(),
                  "qnxml::XmlBufferedStreamTokenizerBase::get_next_char()");
        ASSERT_TRUE(error->nested());
    }
}

TEST(StreamTokenizer, CarriesTheStreamsFailure) {
    const qncore::ErrorCode code("error.test");
    for (const bool own_exception : {true, false}) {
        int reads = 0;
        Tokenizer tokenizer({}, 1, 32, stream_of([&](void* buffer, std::uint64_t size) {
                                if (++reads == 3) {
                                    own_exception
                                        ? qncore::throw_error(code, "gone", QN_LOCATION("source()"))
                                        : throw std::runtime_error("gone");
                                }
                                std::fill_n(static_cast<char*>(buffer), size, 'x');
                                return size;
                            }));
        const qncore::ErrorInfoPtr error = failure_of(tokenizer);
        ASSERT_TRUE(error);
        EXPECT_EQ(error->text(), "[line 1, pos 64]: Error reading from stream");
        EXPECT_EQ(error->code(), qnxml::error::qnxml_tokenizer_stream);
        EXPECT_EQ(error->location().function.view(), "qnxml::XmlStreamTokenizer::read()");
        EXPECT_EQ(error->nested()->text(), "gone");
    }
    // Inside markup, too, the failure is the stream's and not the end of the data.
    for (const char* open :
         {"<",          "<!",          "<!-",       "<!--",  "<!-- -", "<!-- --", "<![CDATA[",
          "<![CDATA[]", "<![CDATA[]]", "<!DOCTYPE", "<?a ",  "<?a ?",  "<a",      "<a ",
          "<a /",       "<a b",        "<a b ",     "<a b=", "<a b='", "<?xml ",  "<?xml ?",
          "</a",        "</a ",        "&",         "&#",    "&#6",    "&#x",     "&a"}) {
        Tokenizer tokenizer({}, 1, 32, memory_stream(open + std::string("\xFF______")));
        ASSERT_TRUE(failure_of(tokenizer)) << open;
        EXPECT_EQ(tokenizer.last_error()->code(), qnxml::error::qnxml_tokenizer_stream) << open;
    }
}

TEST(StreamTokenizer, RefusesMoreBytesThanItHasRoomFor) {
    Tokenizer tokenizer({}, 1, 32, stream_of([](void*, std::uint64_t size) { return size + 1; }));
    EXPECT_EQ(failure_of(tokenizer)->text(), "[line 1, pos 0]: Error reading from stream");
}

} // namespace
