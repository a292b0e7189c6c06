#pragma once

#include <algorithm>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "qnxml/stream_tokenizer.h"
#include "tests/support/memory_stream.h"

namespace qnxml_test {

using Tokenizer = qnxml::XmlStreamTokenizer;

inline Tokenizer::Stream memory_stream(std::string_view text,
                                       std::uint64_t largest_read = ~std::uint64_t{0}) {
    return Tokenizer::Stream(new support::MemoryReadStream(std::string(text), largest_read));
}

/// The tokenizer without the bytes at hand: each character comes through get_next_char().
class PlainTokenizer final : public qnxml::XmlCharStreamTokenizerBase {
  public:
    PlainTokenizer(std::size_t buffer_size, Tokenizer::Stream stream)
        : source_(buffer_size, std::move(stream)) {}

    qnxml::XmlLocation location() const override { return source_.location(); }

  protected:
    int get_next_char(char* out) override {
        const int length = source_.get_next_char(out);
        if (length < 0) {
            stream_failure("Invalid UTF-8 character in stream", {}, source_.last_error()->nested());
        }
        return length;
    }

  private:
    struct Source final : Tokenizer {
        Source(std::size_t buffer_size, Stream stream)
            : Tokenizer({}, 1, buffer_size, std::move(stream)) {}
        using Tokenizer::get_next_char;
    };

    Source source_;
};

/// One token with all that can be asked about it, on a line.
inline std::string describe(qnxml::XmlTokenType token, const qnxml::IXmlTokenizer& tokenizer) {
    std::ostringstream line;
    line << token << '(' << tokenizer.token_text().view() << ')';
    if (token == qnxml::XmlTokenType::AttributeStart) {
        line << static_cast<char>(tokenizer.attribute_quote());
    }
    if (tokenizer.last_error()) {
        line << tokenizer.last_error()->text();
    }
    const qnxml::XmlLocation at = tokenizer.location();
    line << " @" << at.line << ',' << at.linePos << ',' << at.sourcePos;
    return line.str();
}

/// Moves to the end or the failure, at most `most` tokens far.
template <class Visitor>
void for_each_token(qnxml::IXmlTokenizer& tokenizer, Visitor visitor, std::size_t most = 100000) {
    qnxml::XmlTokenType token{};
    while (token != qnxml::XmlTokenType::DocumentEnd && token != qnxml::XmlTokenType::Error &&
           most-- > 0) {
        token = tokenizer.next_token();
        visitor(token);
    }
}

} // namespace qnxml_test
