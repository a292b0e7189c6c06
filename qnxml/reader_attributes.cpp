// Start tags: attributes, namespaces, xml:space.
#include <algorithm>

#include "qnxml/reader.h"
#include "qnxml/reader_location.h"

namespace qnxml {

void XmlReader::read_starttag() {
    const ElementPtr element = pool_->take(XmlElementKind::open, current_);
    if (!element->set_name(token_text())) {
        fail("Invalid element name: '{@elementName}'", {{"elementName", element->name_}},
             QN_READER_LOCATION("read_starttag"));
    }
    current_ = element;
    const XmlTokenType end = read_attributes(element->attributes_);
    resolve_names();
    value_.clear();
    valueState_ = ValueState::Buffered;
    if (end == XmlTokenType::StartTagEndEmpty) {
        element->kind_ = XmlElementKind::empty;
        begin_node(XmlNodeType::Element, State::EmptyDone);
    } else {
        begin_node(XmlNodeType::Element, State::Content);
    }
}

/// Reads attributes with their values; gives the token behind them.
XmlTokenType XmlReader::read_attributes(XmlAttributes& attributes) {
    while (fetch_token() == XmlTokenType::AttributeStart) {
        XmlAttribute& attribute = attributes.prepare();
        if (!attribute.set_name(token_text())) {
            fail("Invalid attribute name: '{@attributeName}'", {{"attributeName", attribute.name_}},
                 QN_READER_LOCATION("read_attributes"));
        }
        attribute.quote_ = tokenizer_->attribute_quote();
        read_attribute_value(attribute.value_);
        if (!attributes.add_attribute()) {
            fail("Duplicate attribute name: '{@attributeName}'",
                 {{"attributeName", attribute.name_}}, QN_READER_LOCATION("read_attributes"));
        }
    }
    return lastToken_;
}

/// Literal white space becomes blanks, what a reference stands for does not (XML 1.0, section
/// 3.3.3).
void XmlReader::read_attribute_value(std::string& value) {
    const auto becomes_blank = [](char byte) {
        return byte == '\t' || byte == '\n' || byte == '\r';
    };
    value.clear();
    while (fetch_token() != XmlTokenType::AttributeEnd) {
        if (lastToken_ == XmlTokenType::CharData) {
            const auto start = static_cast<std::ptrdiff_t>(value.size());
            append_limited(value, token_text());
            std::replace_if(value.begin() + start, value.end(), becomes_blank, ' ');
        } else if (!eval_reference(&value)) {
            fail_unexpected_token(QN_READER_LOCATION("read_attributes"));
        }
    }
}

/// Gives the current element and its attributes their namespaces, and the element what it
/// inherits.
void XmlReader::resolve_names() {
    Element& element = *current_;
    const Element* const parent = element.parent().get();
    element.binder_ = element.attributes_.bind_prefixes() ? &element
                      : parent != nullptr                 ? parent->binder_
                                                          : nullptr;
    for (XmlAttribute& attribute : element.attributes_.view()) {
        if (attribute.local_name_offset() == 0) {
            if (attribute.qualified_name() == "xmlns") {
                element.defaultNamespace_ = &attribute.value();
            }
        } else if (attribute.namespace_name() == nullptr) {
            attribute.namespace_ = find_namespace(attribute.prefix());
            if (attribute.namespace_ == nullptr) {
                fail("Undeclared namespace '{@namespacePrefix}' referenced by attribute "
                     "'{@attributeName}'",
                     {{"namespacePrefix", attribute.prefix()},
                      {"attributeName", attribute.qualified_name()}},
                     QN_READER_LOCATION("read_starttag"));
            }
        } else if (attribute.qualified_name() == "xml:space") {
            element.space_ = xml_space(attribute.value());
        }
    }
    if (parent != nullptr) {
        if (element.space_ == XmlSpace::not_set) {
            element.space_ = parent->space_;
        }
        if (element.defaultNamespace_ == nullptr) {
            element.defaultNamespace_ = parent->defaultNamespace_;
        }
    }
    if (element.local_name_offset() == 0) {
        element.namespace_ = element.defaultNamespace_;
        return;
    }
    element.namespace_ = find_namespace(element.prefix());
    if (element.namespace_ == nullptr) {
        fail("Undeclared namespace '{@namespacePrefix}' referenced by element '{@elementName}'",
             {{"namespacePrefix", element.prefix()}, {"elementName", element.qualified_name()}},
             QN_READER_LOCATION("read_starttag"));
    }
}

XmlSpace XmlReader::xml_space(std::string_view value) {
    if (value == "preserve") {
        return XmlSpace::preserve;
    }
    if (value != "default") {
        fail("Unexpected value of 'xml:space' attribute: \"{@attributeValue}\" expecting "
             "'preserve' or 'default'",
             {{"attributeValue", value}}, QN_READER_LOCATION("read_starttag"));
    }
    return XmlSpace::standard;
}

/// The namespace that the prefix stands for in the current element; null when there is none.
const std::string* XmlReader::find_namespace(std::string_view prefix) const noexcept {
    if (prefix == "xml") {
        return &xml_namespace();
    }
    if (prefix == "xmlns") {
        return &xmlns_namespace();
    }
    return prefix.empty() ? nullptr : current_->find_namespace_prefix(prefix);
}

} // namespace qnxml
