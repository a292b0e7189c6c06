// Buffers, line ends, positions and failures of the source; the two ways through the tokenizer.
#include <gmock/gmock.h>

#include "qncore/error_exception.h"
#include "qnxml/errors.h"
#include "tests/qnxml/tokenizers.h"

namespace {

using qnxml::XmlTokenType;
using qnxml_test::describe;
using qnxml_test::for_each_token;
using qnxml_test::memory_stream;
using qnxml_test::PlainTokenizer;
using qnxml_test::Tokenizer;
using testing::ElementsAre;

std::vector<std::string> lines_of(qnxml::IXmlTokenizer& tokenizer, std::size_t most = 100000) {
    std::vector<std::string> lines;
    for_each_token(
        tokenizer, [&](XmlTokenType token) { lines.push_back(describe(token, tokenizer)); }, most);
    return lines;
}

std::vector<std::string> lines_of(std::string_view document, std::size_t buffer_size,
                                  std::size_t most = 100000) {
    Tokenizer tokenizer({}, 1, buffer_size, memory_stream(document));
    return lines_of(tokenizer, most);
}

TEST(StreamTokenizer, KeepsThePosition) {
    EXPECT_THAT(lines_of("<a>\r\n\xC3\xA9\rb\n</a>", 4096),
                ElementsAre("DocumentStart() @1,0,0", "StartTagStart(a) @1,3,3",
                            "StartTagEnd() @1,3,3", "CharData(\n\xC3\xA9\nb\n) @4,1,11",
                            "EndTag(a) @4,4,14", "DocumentEnd() @4,4,14"));
    // The mark counts as bytes of the first line.
    EXPECT_THAT(lines_of("\xEF\xBB\xBF<a/>", 4096), testing::Contains("StartTagStart(a) @1,6,6"));
}

TEST(StreamTokenizer, TakesAtLeast32Bytes) {
    std::vector<std::uint64_t> sizes;
    const auto source = [&](void*, std::uint64_t size) -> std::uint64_t {
        sizes.push_back(size);
        return 0;
    };
    for (const std::size_t requested : {std::size_t{0}, std::size_t{1}, std::size_t{33}}) {
        Tokenizer tokenizer({}, 1, requested,
                            Tokenizer::Stream(new support::MemoryReadStream(source)));
        for_each_token(tokenizer, [](XmlTokenType) {});
    }
    EXPECT_THAT(sizes, ElementsAre(32, 32, 33));
}

TEST(StreamTokenizer, JoinsWhatAFillCuts) {
    // The 32nd byte is the CR, or the second of the four bytes of one character.
    const std::string head(31, 'a');
    EXPECT_THAT(lines_of(head + "\r\nb", 32),
                testing::Contains("CharData(" + head + "\nb) @2,1,34"));
    EXPECT_THAT(
        lines_of(head.substr(1) + "\xF0\x9F\x98\x80" + "b", 32),
        testing::Contains("CharData(" + head.substr(1) + "\xF0\x9F\x98\x80" + "b) @1,35,35"));
    Tokenizer byte_by_byte({}, 1, 32, memory_stream("<a>\xF0\x9F\x98\x80</a>", 1));
    EXPECT_THAT(lines_of(byte_by_byte), testing::Contains("CharData(\xF0\x9F\x98\x80) @1,8,8"));
}

TEST(StreamTokenizer, ReadsTheOldBufferAgainBehindAFinalCr) {
    EXPECT_THAT(lines_of("\r", 32), ElementsAre("DocumentStart() @1,0,0", "DocumentEnd() @1,1,1"));
    EXPECT_THAT(lines_of("<a/>x\r", 32, 6),
                ElementsAre("DocumentStart() @1,0,0", "StartTagStart(a) @1,3,3",
                            "StartTagEndEmpty() @1,4,4", "CharData(x) @1,6,6",
                            "StartTagStart(a) @1,9,9", "StartTagEndEmpty() @1,10,10"));
    // Once, so that a document that is cut there comes to its end.
    EXPECT_THAT(lines_of("<a>x\r", 32),
                ElementsAre("DocumentStart() @1,0,0", "StartTagStart(a) @1,3,3",
                            "StartTagEnd() @1,3,3", "CharData(x) @1,5,5", "StartTagStart(a) @1,8,8",
                            "StartTagEnd() @1,8,8", "CharData(x) @1,10,10",
                            "DocumentEnd() @1,10,10"));
    // A cut character is lost; what it leaves in the buffer is read when text was held.
    EXPECT_THAT(lines_of("\xE2\x82", 32),
                ElementsAre("DocumentStart() @1,0,0", "DocumentEnd() @1,0,0"));
    EXPECT_EQ(lines_of("xyz\xE2\x82", 32).back().substr(0, 7), "Error()");
}

TEST(StreamTokenizer, RefusesWhatIsNotUtf8) {
    for (const char* bytes : {"\x80", "\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xFE",
                              "\xFF", "\xF8\x88\x80\x80\x80", "\xE4\xB8z", "\xC3("}) {
        Tokenizer tokenizer({}, 1, 64, memory_stream("<a>\n" + std::string(bytes) + "zzzzzz"));
        XmlTokenType last{};
        for_each_token(tokenizer, [&](XmlTokenType token) { last = token; });
        ASSERT_EQ(last, XmlTokenType::Error) << testing::PrintToString(bytes);
        const qncore::ErrorInfoPtr error = tokenizer.last_error();
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
        const auto source = [&](void* buffer, std::uint64_t size) -> std::uint64_t {
            if (++reads == 3) {
                own_exception ? qncore::throw_error(code, "gone", QN_LOCATION("source()"))
                              : throw std::runtime_error("gone");
            }
            std::fill_n(static_cast<char*>(buffer), size, 'x');
            return size;
        };
        Tokenizer tokenizer({}, 1, 32, Tokenizer::Stream(new support::MemoryReadStream(source)));
        for_each_token(tokenizer, [](XmlTokenType) {});
        const qncore::ErrorInfoPtr error = tokenizer.last_error();
        ASSERT_TRUE(error);
        EXPECT_EQ(error->text(), "[line 1, pos 64]: Error reading from stream");
        EXPECT_EQ(error->code(), qnxml::error::qnxml_tokenizer_stream);
        EXPECT_EQ(error->location().function.view(), "qnxml::XmlStreamTokenizer::read()");
        EXPECT_EQ(error->nested()->text(), "gone");
    }
}

TEST(StreamTokenizer, TakesNoStreamAsAnEmptyOne) {
    Tokenizer tokenizer({}, 1, 32, {});
    EXPECT_EQ(lines_of(tokenizer).size(), 2U);
    qnxml::XmlStdStreamTokenizer of_standard({}, 1, 32, nullptr);
    EXPECT_EQ(lines_of(of_standard).size(), 2U);
}

TEST(StdStreamTokenizer, ReadsLikeTheOther) {
    const std::string document = "<a>\r\n" + std::string(100, 'x') + "</a>";
    std::istringstream stream(document);
    qnxml::XmlStdStreamTokenizer tokenizer({}, 1, 32, &stream);
    EXPECT_EQ(lines_of(tokenizer), lines_of(document, 32));
}

TEST(StdStreamTokenizer, ReportsAStreamThatFailed) {
    std::istringstream stream;
    stream.setstate(std::ios::badbit);
    qnxml::XmlStdStreamTokenizer tokenizer({}, 1, 32, &stream);
    EXPECT_THAT(lines_of(tokenizer).back(), testing::HasSubstr("Error reading from stream"));
    EXPECT_EQ(tokenizer.last_error()->location().function.view(),
              "qnxml::XmlStdStreamTokenizer::read()");

    struct Throwing final : std::streambuf {
        std::streamsize xsgetn(char*, std::streamsize) override {
            throw std::runtime_error("gone");
        }
    } buffer;
    std::istream throwing(&buffer);
    qnxml::XmlStdStreamTokenizer of_throwing({}, 1, 32, &throwing);
    lines_of(of_throwing);
    EXPECT_EQ(of_throwing.last_error()->nested()->text(), "gone");
}

/// Documents in which every loop of the tokenizer runs over ends of the buffer, is left by each of
/// its ways, and fails.
const std::vector<std::string>& documents() {
    static const std::vector<std::string> all = [] {
        const std::string run(70, 'r');
        const std::string chunks(2100, 'c');
        std::vector<std::string> made{
            "",
            "<?xml version='1.0' encoding=\"UTF-8\" ?>\r\n<!DOCTYPE " + run + " [<" + run +
                ">]>\n<p:" + run + " xmlns:p = 'u'\n a=\"" + run + "&lt;" + run + "\t'\">" + run +
                "&#x41;&#65 " + run + "\r" + run + "\r\n\n</p:" + run + "  >",
            "<!-- " + run + "-" + run + "\n- -" + run + "--><?" + run + " " + run + "?" + run +
                "?\?><![CDATA[" + run + "]" + run + "]]" + run + "]]]]>",
            "<a>" + chunks + "\n" + chunks + "<b c='" + chunks + "\r\n" + chunks + "'/></a>",
            "<!--" + chunks + "--><?x " + chunks + "?><![CDATA[" + chunks + "]]><!DOCTYPE " +
                chunks + ">",
            "<a>\xC3\xA9" + run + "\xE4\xB8\x80\xF0\x9F\x98\x80" + run + "\xF0\x9F\x98\x80</a>",
            "<\xC3\xA9" + run + "\xC3\xA9\xE4\xB8\x80/><a\xC2\xB7>",
            "<a /" + run + ">" + std::string("\0\x01\x7F", 3) + run + "<?xml ?" + run + ">",
            "\xEF\xBB\xBF<a/>" + run + "\r",
            run + "\xE2\x82",
            "\r",
            "<a>\r\r\n\r" + run + "\r\n",
            "<a " + run + "='" + run + "<",
            "<a>" + run + "\xFF",
        };
        // Every prefix of some, so that each place of the text meets the end of the data.
        for (const std::size_t model : {1U, 2U, 5U}) {
            const std::string whole = made[model];
            for (std::size_t length = 1; length < whole.size(); length += 3) {
                made.push_back(whole.substr(0, length));
            }
        }
        return made;
    }();
    return all;
}

TEST(StreamTokenizer, GivesTheSameWithAndWithoutBytesAtHand) {
    for (std::size_t buffer_size = 32; buffer_size <= 80; ++buffer_size) {
        for (const std::string& document : documents()) {
            Tokenizer with({}, 1, buffer_size, memory_stream(document));
            PlainTokenizer without(buffer_size, memory_stream(document));
            constexpr std::size_t most = 60; // the end of some is never reached
            ASSERT_EQ(lines_of(with, most), lines_of(without, most))
                << "buffer of " << buffer_size << " bytes:\n"
                << testing::PrintToString(document);
        }
    }
}

} // namespace
