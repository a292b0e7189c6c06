#pragma once

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
