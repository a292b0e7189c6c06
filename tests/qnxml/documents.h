#pragma once

#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "qnxml/reader.h"
#include "qnxml/stream_tokenizer.h"
#include "tests/support/failure.h"
#include "tests/support/memory_stream.h"

namespace qnxml_test {

using support::error_of;
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

/// Reads to the end and returns the failure; null if there is none.
inline qncore::ErrorInfoPtr failure_in(qnxml::IXmlTokenizer& tokenizer) {
    for_each_token(tokenizer, [](qnxml::XmlTokenType) {});
    return tokenizer.last_error();
}

/// A reader over a text.
struct Document {
    explicit Document(std::string_view text, qnxml::IEntityResolver* resolver = nullptr)
        : tokenizer({}, 1, 4096, memory_stream(text))
        , reader(&tokenizer, resolver) {}

    Tokenizer tokenizer;
    qnxml::XmlReader reader;
};

struct ScriptedToken {
    ScriptedToken(qnxml::XmlTokenType token, std::string_view itsText = "a")
        : type(token)
        , text(itsText) {}
    qnxml::XmlTokenType type;
    std::string_view text;
};

/// Plays back tokens that no document gives, or only a long one.
class ScriptedTokenizer final : public qnxml::IXmlTokenizer {
  public:
    explicit ScriptedTokenizer(std::vector<ScriptedToken> script)
        : script_(std::move(script)) {}
    qnxml::XmlTokenType next_token() override { return script_.at(next_++).type; }
    qncore::StringSlice<const char*> token_text() const override {
        const std::string_view text = script_[next_ - 1].text;
        return {text.data(), 0, text.size()};
    }
    qncore::ErrorInfoPtr last_error() const override { return {}; }
    std::uint8_t attribute_quote() const override { return '"'; }
    qnxml::XmlLocation location() const override { return {}; }

  private:
    std::vector<ScriptedToken> script_;
    std::size_t next_ = 0;
};

/// A message without the position before it.
inline std::string without_position(const std::string& message) {
    return message.substr(message.find("]: ") + 3);
}

/// What the action throws: code, function and message without the position, apart by blanks; empty
/// if it throws nothing.
template <class Action>
std::string failure_of(const Action& action) {
    std::string text = support::failure_of(action);
    if (const std::size_t position = text.find("[line "); position != std::string::npos) {
        text.erase(position, text.find("]: ") + 3 - position);
    }
    return text;
}

/// Knows "empty" and "markup", and keeps what it was asked.
class Resolver final : public qnxml::IEntityResolver {
  public:
    bool resolve(qncore::StringSlice<const char*> name, std::string* result) override {
        asked += name.str() + (result != nullptr ? "; " : "?; ");
        if (result != nullptr) {
            *result = name.view() == "markup" ? "<b>&x;" : "";
        }
        return name.view() == "empty" || name.view() == "markup";
    }
    std::string asked;
};

inline std::string full_name(const qnxml::XmlNode& node) {
    const std::string* const space = node.namespace_name();
    return " " + node.qualified_name() + (space != nullptr ? "{" + *space + "}" : "");
}

/// The current node of the reader: its type, the name and the attributes of a tag, the value
/// of what has one.
inline std::string describe_node(qnxml::XmlReader& reader) {
    using qnxml::XmlNodeType;
    std::ostringstream out;
    const XmlNodeType type = reader.node_type();
    const qnxml::XmlReader::ElementPtr element = reader.current_element();
    out << type;
    if (type == XmlNodeType::Element || type == XmlNodeType::EndElement ||
        type == XmlNodeType::PI) {
        out << full_name(*element);
        EXPECT_TRUE(type != XmlNodeType::PI || element->local_name() == element->qualified_name());
    }
    if (type == XmlNodeType::Element || type == XmlNodeType::XmlDeclaration) {
        EXPECT_EQ(reader.value(), "");
        for (const qnxml::XmlAttribute& attribute : element->attributes()) {
            out << full_name(attribute) << '=' << attribute.value();
        }
    } else if (type != XmlNodeType::EndElement && !reader.value().empty()) {
        out << '(' << reader.value() << ')';
    }
    return out.str();
}

/// All nodes up to the end, or up to the error, which follows "! ".
inline std::string nodes(qnxml::XmlReader& reader) {
    std::string all;
    const qncore::ErrorInfoPtr error = error_of([&] {
        while (reader.read_next()) {
            all += (all.empty() ? "" : "; ") + describe_node(reader);
        }
    });
    return all + (error ? (all.empty() ? "! " : "; ! ") + without_position(error->text()) : "");
}

} // namespace qnxml_test
