// Sizes, depths, memory.
#include <gmock/gmock.h>

#include "tests/qnxml/documents.h"
#include "tests/support/allocations.h"

namespace {

using qnxml::XmlNodeType;
using qnxml_test::failure_of;
using qnxml_test::Tokenizer;

/// A stream of `head`, then `size` bytes of `body` over and over, then `tail`.
Tokenizer::Stream stream_of(const std::string& head, const std::string& body, std::uint64_t size,
                            const std::string& tail) {
    const auto source = [=, position = std::uint64_t{0}](void* buffer,
                                                         std::uint64_t count) mutable {
        const std::uint64_t end = head.size() + size;
        std::string_view piece = std::string_view(tail).substr(
            position < end ? tail.size() : std::min(position - end, tail.size()));
        if (position < head.size()) {
            piece = std::string_view(head).substr(position);
        } else if (position < end) {
            piece = std::string_view(body).substr((position - head.size()) % body.size());
            piece = piece.substr(0, end - position);
        }
        piece = piece.substr(0, count);
        piece.copy(static_cast<char*>(buffer), piece.size());
        position += piece.size();
        return std::uint64_t{piece.size()};
    };
    return Tokenizer::Stream(new support::MemoryReadStream(source));
}

/// Knows every entity as "more".
struct Resolver final : qnxml::IEntityResolver {
    bool resolve(qncore::StringSlice<const char*> /*name*/, std::string* result) override {
        *result = "more";
        return true;
    }
};

TEST(Limits, StopValuesOfMoreThan128MiB) {
    constexpr std::uint64_t limit = 0x8000000;
    const std::string run(4096, 'x');
    const std::string blanks(4096, ' ');
    // Head, body, its size and tail of a document, and the size of the value, 0 if it fails.
    const std::tuple<const char*, std::string, std::uint64_t, const char*, std::size_t> cases[] = {
        {"<a>", run, limit, "</a>", limit},
        {"<a>", run, limit + 1, "</a>", 0},
        {"<a>", run, limit, "&lt;</a>", 0},
        {"<a>", run, limit, "&#65;</a>", 0},
        {"<a>", run, limit, "&x;</a>", limit + 4}, // a resolver's text is not limited
        {"<a><!--", run, limit + 1, "--></a>", 0},
        {"<a><![CDATA[", run, limit + 1, "]]></a>", 0},
        {"<a><?p ", run, limit, "?></a>", 0},
        {"<a>", blanks, limit + 1, "</a>", 0},
        {"<a/>", blanks, limit + 1, "", 0},
        {"<a b='", run, limit + 1, "'/>", 0},
        // Each text is far below the limit, their sum is not.
        {"<a>", run + "<b/>", 2 * limit, "</a>", 0},
    };
    for (const auto& [head, body, size, tail, expected] : cases) {
        Tokenizer tokenizer({}, 1, 65536, stream_of(head, body, size, tail));
        Resolver resolver;
        qnxml::XmlReader reader(&tokenizer, &resolver);
        reader.set_skip_whitespace(false);
        std::size_t bytes = 0;
        EXPECT_EQ(failure_of([&, &all = body] {
                      reader.next_element();
                      if (all.ends_with('>')) {
                          bytes = reader.read_element_text().size();
                      } else if (reader.read_next()) {
                          bytes = reader.value().size();
                      }
                  }),
                  expected != 0 ? ""
                                : "error.qnxml.reader.unexpected.size "
                                  "qnxml::XmlReader::throw_string_size_error() "
                                  "Node value exceeds 134217728bytes of character data")
            << head << tail;
        EXPECT_EQ(bytes, expected) << head << tail;
    }
}

TEST(Limits, LeaveMemoryAloneInTheSteadyState) {
    const std::string body = "<n:entry xmlns:n='urn:one' first='a value too long for no memory' "
                             "second='&lt;two&gt;'><n:path>C:\\Keys\\a&amp;b.crt</n:path> "
                             "<!-- comment --><?target data?><![CDATA[ more ]]></n:entry>\n";
    Tokenizer tokenizer({}, 1, 4096, stream_of("<r>", body, body.size() * 20000, "</r>"));
    qnxml::XmlReader reader(&tokenizer);
    std::size_t after_some = 0;
    std::size_t elements = 0;
    while (reader.read_next()) {
        if (reader.node_type() == XmlNodeType::Element && ++elements == 100) {
            after_some = support::allocations();
        }
        reader.value();
    }
    EXPECT_EQ(elements, 40001U);
    EXPECT_EQ(support::allocations(), after_some);
}

TEST(Limits, KeepFewFreeElements) {
    std::string tower = "<a></a>";
    while (tower.size() < 7000) {
        tower = "<a>" + tower + "</a>";
    }
    qnxml_test::Document document("<r>" + tower + tower + "</r>");
    std::size_t elements = 0;
    std::size_t after_first = 0;
    while (document.reader.next_element()) {
        if (++elements == 1001) {
            after_first = support::allocations();
        }
    }
    EXPECT_EQ(elements, 2001U);
    EXPECT_GT(support::allocations() - after_first, 700U); // taken anew, and not kept
}

/// A document whose cost were the square of its length would take minutes here, and a recursion to
/// its depth more stack than there is.
TEST(Limits, AllowAnyDepthAtACostOfTheLengthOfTheDocument) {
    std::string nested = "<p:a xmlns:p='u'>";
    std::string distinct = "<a>";
    std::string attributes = "<a";
    for (int i = 0; i < 200000; ++i) {
        nested += "<p:b xmlns:q='v'>";
    }
    for (int i = 0; i < 40000; ++i) {
        const std::string number = std::to_string(i);
        distinct += "<n" + number + ":b xmlns:n" + number + "='v'>";
        attributes += " p:a" + number + "='' xmlns:n" + number + "='v'";
    }
    for (const std::string& text : {nested, distinct, attributes + " xmlns:p='u'>"}) {
        qnxml_test::Document document(text);
        qnxml::XmlReader::ElementPtr last;
        EXPECT_THAT(failure_of([&] {
                        while (document.reader.next_element()) {
                            last = document.reader.current_element();
                        }
                    }),
                    testing::HasSubstr("Unexpected end of document"));
    }
}

} // namespace
