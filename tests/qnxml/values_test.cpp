// The ways to read a value, references, entity resolvers.
#include <gmock/gmock.h>

#include "qnxml/errors.h"
#include "tests/qnxml/documents.h"

namespace {

using qnxml::XmlNodeType;
using qnxml_test::Document;
using qnxml_test::error_of;
using qnxml_test::without_position;
using testing::ElementsAre;

void read_to(qnxml::XmlReader& reader, XmlNodeType type) {
    while (reader.node_type() != type && reader.read_next()) {
    }
    ASSERT_EQ(reader.node_type(), type);
}

std::string streamed(qncore::IReadStream& stream, std::size_t piece) {
    std::string text;
    std::string buffer(piece, '?');
    while (const std::uint64_t count = stream.read(buffer.data(), piece)) {
        text.append(buffer, 0, count);
    }
    return text;
}

const std::string long_text = "  \n&lt;" + std::string(1500, 'x') + "&#233;" +
                              std::string(60, 'y') + "&amp;&amp;" + std::string(65, 'z') + " ";
const std::string long_value = "  \n<" + std::string(1500, 'x') + "\xC3\xA9" +
                               std::string(60, 'y') + "&&" + std::string(65, 'z') + " ";

struct Case {
    XmlNodeType type;
    std::string document;
    std::string value;
};

const Case cases[] = {
    {XmlNodeType::Text, "<a>" + long_text + "</a>", long_value},
    {XmlNodeType::Text, "<a>x</a>", "x"},
    {XmlNodeType::Comment, "<a><!--" + long_value + "--></a>", long_value},
    {XmlNodeType::Comment, "<a><!----></a>", ""},
    {XmlNodeType::CDATA, "<a><![CDATA[" + long_value + "]]></a>", long_value},
    {XmlNodeType::EndElement, "<a></a>", ""},
};

TEST(Values, AreTheSameByAllWays) {
    for (const Case& test : cases) {
        const auto check_rest = [&](Document& document) {
            while (document.reader.node_type() != XmlNodeType::EndElement) {
                ASSERT_TRUE(document.reader.read_next());
            }
            EXPECT_FALSE(document.reader.read_next());
        };
        Document whole(test.document);
        read_to(whole.reader, test.type);
        EXPECT_EQ(whole.reader.value(), test.value) << test.document;
        EXPECT_EQ(&whole.reader.value(), &whole.reader.value());
        EXPECT_EQ(whole.reader.value_stream().available(), test.value.size());
        EXPECT_EQ(streamed(whole.reader.value_stream(), 100), test.value);
        check_rest(whole);

        for (const std::size_t piece : {1U, 7U, 64U, 5000U}) {
            Document pieces(test.document);
            read_to(pieces.reader, test.type);
            EXPECT_EQ(streamed(pieces.reader.value_stream(), piece), test.value) << piece;
            EXPECT_EQ(pieces.reader.value_stream().available(), 0U);
            check_rest(pieces);
        }

        Document skipped(test.document);
        read_to(skipped.reader, test.type);
        EXPECT_EQ(skipped.reader.value_stream().skip(10000), test.value.size());
        check_rest(skipped);

        Document written(test.document);
        read_to(written.reader, test.type);
        support::MemoryWriteStream out;
        written.reader.read_value_into_stream(out);
        EXPECT_EQ(out.text, test.value);
        check_rest(written);

        Document left(test.document);
        read_to(left.reader, test.type);
        char byte = 0;
        left.reader.value_stream().read(&byte, 1);
        check_rest(left);
    }
}

TEST(Values, OfInstructionsEndOnlyInTheBuffer) {
    const std::string document = "<a><?p data?></a>";
    Document whole(document);
    read_to(whole.reader, XmlNodeType::PI);
    EXPECT_EQ(whole.reader.value(), " data");
    EXPECT_TRUE(whole.reader.read_next());
    EXPECT_EQ(whole.reader.current_element()->qualified_name(), "a");

    Document written(document);
    read_to(written.reader, XmlNodeType::PI);
    support::MemoryWriteStream out;
    written.reader.read_value_into_stream(out);
    EXPECT_EQ(out.text, " data");
    EXPECT_TRUE(written.reader.read_next());

    Document pieces(document);
    read_to(pieces.reader, XmlNodeType::PI);
    std::string data(5, '?');
    EXPECT_EQ(pieces.reader.value_stream().read(data.data(), 5), 5U);
    EXPECT_EQ(data, " data");
    const auto error = error_of([&] { pieces.reader.value_stream().read(data.data(), 5); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), qnxml::error::qnxml_reader_unexpected_token);
    EXPECT_EQ(without_position(error->text()), "Unexpected tokenizer token: PIEnd");
    EXPECT_EQ(error->location().function.view(), "qnxml::XmlReader::stream_read_aux()");
    const auto later = error_of([&] { pieces.reader.value_stream().skip(1); });
    EXPECT_EQ(without_position(later->text()), "Value cannot be read after a parse error");
    EXPECT_EQ(later->location().function.view(),
              "qnxml::XmlReader:ValueReadStreamImpl::check_state()");
}

TEST(Values, GoLargeChunksStraightToTheStream) {
    Document document("<a>" + std::string(2500, 'x') + "&lt;" + std::string(2500, 'y') + "</a>");
    read_to(document.reader, XmlNodeType::Text);
    support::MemoryWriteStream out;
    document.reader.read_value_into_stream(out);
    EXPECT_THAT(out.writes, ElementsAre(1018, 1018, 464, 1, 1018, 1018, 464));

    std::string many;
    for (int i = 0; i < 100; ++i) {
        many += "ab&gt;";
    }
    Document gathered("<a>" + many + "</a>");
    read_to(gathered.reader, XmlNodeType::Text);
    support::MemoryWriteStream small;
    gathered.reader.read_value_into_stream(small);
    EXPECT_THAT(small.writes, ElementsAre(129, 129, 42));
}

TEST(Values, AreReadOnce) {
    const std::string stream_message =
        "Value has already been read through stream, cannot create value buffer";
    const auto text = [] { return "<a>x</a>"; };
    support::MemoryWriteStream out;

    Document written(text());
    read_to(written.reader, XmlNodeType::Text);
    EXPECT_EQ(written.reader.value_stream().available(), ~std::uint64_t{0});
    written.reader.value();
    written.reader.read_value_into_stream(out);
    EXPECT_EQ(out.text, "x");
    auto error = error_of([&] { written.reader.read_value_into_stream(out); });
    EXPECT_EQ(without_position(error->text()), stream_message);
    EXPECT_EQ(error->location().function.view(), "qnxml::XmlReader::read_value_into_stream()");
    error = error_of([&] { written.reader.read_value_into_stream(out); });
    EXPECT_EQ(without_position(error->text()), "Value cannot be read after a parse error");

    Document streaming(text());
    read_to(streaming.reader, XmlNodeType::Text);
    streaming.reader.value_stream().skip(1);
    error = error_of([&] { streaming.reader.value(); });
    EXPECT_EQ(without_position(error->text()), stream_message);
    EXPECT_EQ(error->location().function.view(), "qnxml::XmlReader::read_value_into_buffer()");
}

/// Knows "empty" and "markup".
class Resolver final : public qnxml::IEntityResolver {
  public:
    bool resolve(qncore::StringSlice<const char*> name, std::string* result) override {
        asked += name.str() + (result != nullptr ? "; " : "?; ");
        if (name.view() != "empty" && name.view() != "markup") {
            return false;
        }
        if (result != nullptr) {
            *result = name.view() == "markup" ? "<b>&x;" : "";
        }
        return true;
    }
    std::string asked;
};

TEST(References, AskTheResolver) {
    Resolver resolver;
    Document read("<a b='&markup;\n'>&empty;x&empty;&markup;</a>", &resolver);
    ASSERT_TRUE(read.reader.next_element());
    EXPECT_EQ(read.reader.current_element()->find_attribute("b")->value(), "<b>&x; ");
    ASSERT_TRUE(read.reader.read_next());
    EXPECT_EQ(streamed(read.reader.value_stream(), 2), "x<b>&x;");
    EXPECT_EQ(resolver.asked, "markup; empty; empty; markup; ");

    resolver.asked.clear();
    Document skipped("<a>&empty;&none;</a>", &resolver);
    ASSERT_TRUE(skipped.reader.next_element());
    ASSERT_TRUE(skipped.reader.read_next());
    const auto error = error_of([&] { skipped.reader.read_next(); });
    EXPECT_EQ(without_position(error->text()), "Unable to resolve entity reference 'none'");
    EXPECT_EQ(error->location().function.view(), "qnxml::XmlReader::resolve_entity_ref()");
    EXPECT_EQ(resolver.asked, "empty?; none?; ");
}

TEST(References, LoseTheNameOfTheirParameter) {
    Document document("<a>&#x00;</a>");
    read_to(document.reader, XmlNodeType::Text);
    const auto error = error_of([&] { document.reader.value(); });
    EXPECT_EQ(*error->params().find("charReferece"), "x00");
}

} // namespace
