// Sizes, depths, memory.
#include <gmock/gmock.h>

#include "tests/qnxml/allocations.h"
#include "tests/qnxml/documents.h"

namespace {

using qnxml::XmlNodeType;
using qnxml_test::failure_of;
using qnxml_test::Tokenizer;

/// Delivers `head`, then `body` over and over, `size` bytes of it in all, then `tail`.
class EndlessSource {
  public:
    EndlessSource(std::string head, std::string body, std::uint64_t size, std::string tail)
        : head_(std::move(head))
        , body_(std::move(body))
        , tail_(std::move(tail))
        , size_(size) {}

    std::uint64_t operator()(void* buffer, std::uint64_t count) {
        const std::string_view piece = next_piece().substr(0, count);
        std::copy(piece.begin(), piece.end(), static_cast<char*>(buffer));
        position_ += piece.size();
        return piece.size();
    }

  private:
    std::string_view next_piece() const {
        const std::uint64_t bodyEnd = head_.size() + size_;
        if (position_ < head_.size()) {
            return std::string_view(head_).substr(position_);
        }
        if (position_ < bodyEnd) {
            return std::string_view(body_)
                .substr((position_ - head_.size()) % body_.size())
                .substr(0, bodyEnd - position_);
        }
        return std::string_view(tail_).substr(std::min(position_ - bodyEnd, tail_.size()));
    }

    std::string head_;
    std::string body_;
    std::string tail_;
    std::uint64_t size_;
    std::uint64_t position_ = 0;
};

Tokenizer::Stream stream_of(EndlessSource source) {
    return Tokenizer::Stream(new support::MemoryReadStream(std::move(source)));
}

TEST(Limits, StopValuesBehind128MiB) {
    constexpr std::uint64_t limit = 0x8000000;
    const std::string run(4096, 'x');
    const auto value = [](qnxml::XmlReader& reader) {
        reader.next_element();
        reader.read_next();
        return reader.value().size();
    };
    const auto attribute = [](qnxml::XmlReader& reader) {
        reader.next_element();
        return reader.current_element()->attributes()[0].value().size();
    };
    const auto text = [](qnxml::XmlReader& reader) {
        reader.next_element();
        return reader.read_element_text().size();
    };
    const struct {
        EndlessSource source;
        std::size_t (*read)(qnxml::XmlReader&);
        bool passes;
    } cases[] = {
        {{"<a>", run, limit, "</a>"}, value, true},
        {{"<a>", run, limit + 1, "</a>"}, value, false},
        {{"<a b='", run, limit + 1, "'/>"}, attribute, false},
        // Each text is far below the limit, their sum is not.
        {{"<a>", run + "<b/>", 2 * limit, "</a>"}, text, false},
    };
    for (const auto& test : cases) {
        Tokenizer tokenizer({}, 1, 65536, stream_of(test.source));
        qnxml::XmlReader reader(&tokenizer);
        std::size_t bytes = 0;
        EXPECT_EQ(failure_of([&] { bytes = test.read(reader); }),
                  test.passes ? ""
                              : "error.qnxml.reader.unexpected.size "
                                "qnxml::XmlReader::throw_string_size_error() "
                                "Node value exceeds 134217728bytes of character data");
        EXPECT_EQ(bytes, test.passes ? limit : 0);
    }
}

TEST(Limits, LeaveMemoryAloneInTheSteadyState) {
    const std::string body = "<n:entry xmlns:n='urn:one' first='a value too long for no memory' "
                             "second='&lt;two&gt;'><n:path>C:\\Keys\\a&amp;b.crt</n:path> "
                             "<!-- comment --><?target data?><![CDATA[ more ]]></n:entry>\n";
    Tokenizer tokenizer({}, 1, 4096, stream_of({"<r>", body, body.size() * 20000, "</r>"}));
    qnxml::XmlReader reader(&tokenizer);
    std::size_t after_some = 0;
    std::size_t elements = 0;
    while (reader.read_next()) {
        if (reader.node_type() == XmlNodeType::Element && ++elements == 100) {
            after_some = qnxml_test::allocations();
        }
        reader.value();
    }
    EXPECT_EQ(elements, 40001U);
    EXPECT_EQ(qnxml_test::allocations(), after_some);
}

TEST(Limits, AllowAnyDepth) {
    constexpr std::size_t depth = 300000;
    Tokenizer tokenizer({}, 1, 4096, stream_of({"<a xmlns:p='u'>", "<p:b>", 5 * depth, ""}));
    qnxml::XmlReader reader(&tokenizer);
    qnxml::XmlReader::ElementPtr last;
    EXPECT_NE(failure_of([&] {
                  while (reader.next_element()) {
                      last = reader.current_element();
                  }
              }),
              "");
    std::size_t links = 0;
    for (const qnxml::XmlElement* link = last.get(); link != nullptr; link = link->parent().get()) {
        ++links;
    }
    EXPECT_EQ(links, depth + 1);
}

} // namespace
