// Sizes, depths, memory, cut and arbitrary input.
#include <random>

#include <gmock/gmock.h>

#include "qnxml/errors.h"
#include "tests/qnxml/allocations.h"
#include "tests/qnxml/documents.h"
#include "tests/support/exact_buffer.h"

namespace {

using qnxml::XmlNodeType;
using qnxml_test::error_of;
using qnxml_test::Tokenizer;
using namespace std::string_view_literals;

/// Delivers `head`, then `body` over and over, `size` bytes of it in all, then `tail`.
class EndlessSource {
  public:
    EndlessSource(std::string head, std::string body, std::uint64_t size, std::string tail)
        : head_(std::move(head))
        , body_(std::move(body))
        , tail_(std::move(tail))
        , size_(size) {}

    std::uint64_t operator()(void* buffer, std::uint64_t count) {
        auto* const out = static_cast<char*>(buffer);
        std::uint64_t done = 0;
        while (done < count) {
            const std::string_view piece = next_piece().substr(0, count - done);
            if (piece.empty()) {
                break;
            }
            std::copy(piece.begin(), piece.end(), out + done);
            position_ += piece.size();
            done += piece.size();
        }
        return done;
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

TEST(Limits, StopAValueBehind128MiB) {
    constexpr std::uint64_t limit = 0x8000000;
    for (const std::uint64_t size : {limit, limit + 1}) {
        Tokenizer tokenizer({}, 1, 65536, stream_of({"<a>", std::string(4096, 'x'), size, "</a>"}));
        qnxml::XmlReader reader(&tokenizer);
        ASSERT_TRUE(reader.next_element());
        ASSERT_TRUE(reader.read_next());
        std::size_t bytes = 0;
        const auto error = error_of([&] { bytes = reader.value().size(); });
        if (size == limit) {
            EXPECT_FALSE(error);
            EXPECT_EQ(bytes, limit);
            EXPECT_TRUE(reader.read_next());
            continue;
        }
        ASSERT_TRUE(error);
        EXPECT_EQ(error->code(), qnxml::error::qnxml_reader_unexpected_size);
        EXPECT_EQ(qnxml_test::without_position(error->text()),
                  "Node value exceeds 134217728bytes of character data");
        EXPECT_EQ(error->location().function.view(), "qnxml::XmlReader::throw_string_size_error()");
    }
}

TEST(Limits, HoldForAttributesAndForTheTextOfAnElement) {
    constexpr std::uint64_t limit = 0x8000000;
    Tokenizer attribute({}, 1, 65536,
                        stream_of({"<a b='", std::string(4096, 'x'), limit + 1, "'/>"}));
    qnxml::XmlReader of_attribute(&attribute);
    auto error = error_of([&] { of_attribute.next_element(); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), qnxml::error::qnxml_reader_unexpected_size);

    // Each text is far below the limit, their sum is not.
    Tokenizer sum({}, 1, 65536,
                  stream_of({"<a>", std::string(4092, 'x') + "<b/>", 2 * limit, "</a>"}));
    qnxml::XmlReader of_sum(&sum);
    ASSERT_TRUE(of_sum.next_element());
    error = error_of([&] { of_sum.read_element_text(); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), qnxml::error::qnxml_reader_unexpected_size);
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
    const auto error = error_of([&] {
        while (reader.next_element()) {
            last = reader.current_element();
        }
    });
    ASSERT_TRUE(error);
    std::size_t links = 0;
    for (const qnxml::XmlElement* link = last.get(); link != nullptr; link = link->parent().get()) {
        ++links;
    }
    EXPECT_EQ(links, depth + 1);
}

/// Reads all with all values; what matters is that it comes to an end.
void read_through(std::string_view document) {
    const support::ExactBuffer bytes(document);
    std::size_t position = 0;
    const auto source = [&](void* buffer, std::uint64_t count) {
        const std::size_t size = std::min<std::size_t>(count, bytes.size() - position);
        std::copy_n(bytes.data() + position, size, static_cast<char*>(buffer));
        position += size;
        return std::uint64_t{size};
    };
    Tokenizer tokenizer({}, 1, 32, Tokenizer::Stream(new support::MemoryReadStream(source)));
    qnxml::XmlReader reader(&tokenizer);
    const auto error = error_of([&] {
        while (reader.read_next()) {
            reader.value();
        }
    });
    EXPECT_EQ(reader.node_type(), error ? XmlNodeType::Error : XmlNodeType::End);
}

TEST(Limits, EndWithEachPrefixOfADocument) {
    const std::string document =
        "\xEF\xBB\xBF<?xml version=\"1.0\" encoding='UTF-8'?>\n<!DOCTYPE r [<!ELEMENT r ANY>]>\n"
        "<p:r xmlns:p='urn:p' a=\"1 &amp; 2\"> text &#x20AC; \xE2\x82\xAC <![CDATA[ ]] ]]>"
        "<!-- - --><?pi data ?\?><empty p:b = 'c'/ ></p:r >\n";
    for (std::size_t length = 0; length <= document.size(); ++length) {
        SCOPED_TRACE(length);
        read_through(std::string_view(document).substr(0, length));
    }
}

TEST(Limits, EndWithAnyBytes) {
    std::minstd_rand random(20261121);
    const auto alphabet = "<>/!?-[]CDATA&;#x1='\" \n\r:ab.\xC3\xA9\0\xFF"sv;
    for (int i = 0; i < 20000; ++i) {
        std::string document(random() % 60, '\0');
        for (char& byte : document) {
            byte = i % 2 == 0 ? alphabet[random() % alphabet.size()]
                              : static_cast<char>(random() % 256);
        }
        SCOPED_TRACE(testing::PrintToString(document));
        read_through(document);
    }
}

} // namespace
