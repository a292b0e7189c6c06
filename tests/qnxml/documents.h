#pragma once

#include <string>
#include <string_view>

#include "qnxml/reader.h"
#include "tests/qnxml/tokenizers.h"
#include "tests/support/failure.h"

namespace qnxml_test {

using support::error_of;

/// A reader over a text.
struct Document {
    explicit Document(std::string_view text, qnxml::IEntityResolver* resolver = nullptr,
                      std::size_t buffer_size = 4096)
        : tokenizer({}, 1, buffer_size, memory_stream(text))
        , reader(&tokenizer, resolver) {}

    Tokenizer tokenizer;
    qnxml::XmlReader reader;
};

/// A message without the position before it.
inline std::string without_position(const std::string& message) {
    return message.substr(message.find("]: ") + 3);
}

/// What the action throws: code, function and message without the position, apart by blanks; empty
/// when it throws nothing.
template <class Action>
std::string failure_of(const Action& action) {
    std::string text = support::failure_of(action);
    if (const std::size_t position = text.find("[line "); position != std::string::npos) {
        text.erase(position, text.find("]: ") + 3 - position);
    }
    return text;
}

/// The node on which the reader stands: its type, the name and the attributes of a tag, the value
/// of what has one.
inline std::string describe_node(qnxml::XmlReader& reader) {
    using qnxml::XmlNodeType;
    std::ostringstream out;
    out << reader.node_type();
    const qnxml::XmlReader::ElementPtr element = reader.current_element();
    switch (reader.node_type()) {
    case XmlNodeType::Element:
    case XmlNodeType::EndElement:
    case XmlNodeType::PI:
        out << ' ' << element->qualified_name();
        if (element->namespace_name() != nullptr) {
            out << '{' << *element->namespace_name() << '}';
        }
        break;
    default:
        break;
    }
    if (reader.node_type() == XmlNodeType::Element ||
        reader.node_type() == XmlNodeType::XmlDeclaration) {
        for (const qnxml::XmlAttribute& attribute : element->attributes()) {
            out << ' ' << attribute.qualified_name();
            if (attribute.namespace_name() != nullptr) {
                out << '{' << *attribute.namespace_name() << '}';
            }
            out << '=' << attribute.value();
        }
    } else if (reader.node_type() != XmlNodeType::EndElement && !reader.value().empty()) {
        out << '(' << reader.value() << ')';
    }
    return out.str();
}

/// All nodes up to the end, or up to the error, which stands behind "! ".
inline std::string nodes(qnxml::XmlReader& reader) {
    std::string all;
    const qncore::ErrorInfoPtr error = error_of([&] {
        while (reader.read_next()) {
            all += (all.empty() ? "" : "; ") + describe_node(reader);
        }
    });
    if (error) {
        all += (all.empty() ? "! " : "; ! ") + without_position(error->text());
    }
    return all;
}

} // namespace qnxml_test
