// Start tags: attributes, namespaces, xml:space.
#include <algorithm>

#include "qnxml/byte_run.h"
#include "qnxml/element_pool.h"
#include "qnxml/reader.h"
#include "qnxml/reader_location.h"

namespace qnxml {

namespace {

/// Bytes that are not white space to be replaced by a blank.
constexpr ByteSet plain_bytes = ByteSet::plain_but("\t");

constexpr std::size_t most_compared_names = 32;
constexpr std::size_t most_idle_prefixes = 32;

} // namespace

void XmlReader::read_starttag() {
    ElementPtr taken = pool_->take(XmlElementKind::open, current_);
    Element& element = *taken;
    element.set_name(token_text());
    if (!element.has_local_name()) {
        fail("Invalid element name: '{@elementName}'", QN_READER_LOCATION("read_starttag"),
             {{"elementName", element.name_}});
    }
    current_ = std::move(taken);
    const XmlTokenType end = read_attributes(element);
    resolve_names();
    value_.clear();
    valueState_ = ValueState::Buffered;
    if (end == XmlTokenType::StartTagEndEmpty) {
        element.kind_ = XmlElementKind::empty;
        begin_node(XmlNodeType::Element, State::EmptyDone);
    } else {
        begin_node(XmlNodeType::Element, State::Content);
    }
}

/// Reads attributes with their values. Returns the token after them.
XmlTokenType XmlReader::read_attributes(Element& element) {
    while (fetch_token() == XmlTokenType::AttributeStart) {
        XmlAttribute& attribute = element.next_attribute();
        if (attribute.set_name(token_text())) {
            element.distinctNames_ = std::min(element.distinctNames_, element.attributeCount_);
        }
        if (!attribute.has_local_name()) {
            fail("Invalid attribute name: '{@attributeName}'",
                 QN_READER_LOCATION("read_attributes"), {{"attributeName", attribute.name_}});
        }
        attribute.quote_ = tokenizer_->attribute_quote();
        read_attribute_value(attribute.value_);
        if (!add_attribute(element)) {
            fail("Duplicate attribute name: '{@attributeName}'",
                 QN_READER_LOCATION("read_attributes"), {{"attributeName", attribute.name_}});
        }
    }
    return lastToken_;
}

/// Replaces literal white space, but not the text of references, by blanks (XML 1.0, section
/// 3.3.3).
void XmlReader::read_attribute_value(std::string& value) {
    const auto becomes_blank = [](char byte) {
        return byte == '\t' || byte == '\n' || byte == '\r';
    };
    value.clear();
    while (fetch_token() != XmlTokenType::AttributeEnd) {
        if (lastToken_ == XmlTokenType::CharData) {
            const std::string_view text = token_text();
            append_limited(value, text);
            const char* const end = text.data() + text.size();
            const auto rest = end - impl::end_of_run<plain_bytes>(text.data(), end);
            std::replace_if(value.end() - rest, value.end(), becomes_blank, ' ');
        } else if (!eval_reference(&value)) {
            fail_unexpected_token(QN_READER_LOCATION("read_attributes"));
        }
    }
}

/// Returns whether the name of the filled attribute is new. Few names are compared one by one, many
/// are looked up, so that no document costs the square of their number.
bool XmlReader::is_new_name(const Element& element) {
    const std::span<const XmlAttribute> others = element.attributes();
    const std::string& name = element.attributes_[others.size()].qualified_name();
    if (others.size() < most_compared_names) {
        const XmlAttribute* const end = others.data() + others.size();
        return find_attribute(others.data(), end, name) == end;
    }
    if (others.size() == most_compared_names) {
        attributeNames_.clear();
        for (const XmlAttribute& other : others) {
            attributeNames_.insert(other.qualified_name());
        }
    }
    return attributeNames_.insert(name).second;
}

/// Adds the filled attribute, in the namespace of its prefix if that is reserved. Returns false if
/// the element already has an attribute of that qualified name.
bool XmlReader::add_attribute(Element& element) {
    if (element.attributeCount_ >= element.distinctNames_) {
        if (!is_new_name(element)) {
            return false;
        }
        element.distinctNames_ = element.attributeCount_ + 1;
    }
    XmlAttribute& added = element.attributes_[element.attributeCount_++];
    if (added.prefix() == "xml") {
        added.namespace_ = &xml_namespace();
    } else if (added.prefix() == "xmlns") {
        added.namespace_ = &xmlns_namespace();
        element.bindsPrefixes_ = true;
    }
    return true;
}

/// Sets the namespaces of the current element and its attributes, and what the element inherits.
void XmlReader::resolve_names() {
    Element& element = *current_;
    if (element.bindsPrefixes_) {
        bind_prefixes();
    }
    resolve_attributes();
    if (const Element* const parent = element.parent().get()) {
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
             QN_READER_LOCATION("read_starttag"),
             {{"namespacePrefix", element.prefix()}, {"elementName", element.qualified_name()}});
    }
}

void XmlReader::resolve_attributes() {
    Element& element = *current_;
    for (std::size_t i = 0; i < element.attributeCount_; ++i) {
        XmlAttribute& attribute = element.attributes_[i];
        if (attribute.local_name_offset() == 0) {
            if (attribute.qualified_name() == "xmlns") {
                element.defaultNamespace_ = &attribute.value();
            }
        } else if (attribute.namespace_name() == nullptr) {
            attribute.namespace_ = find_namespace(attribute.prefix());
            if (attribute.namespace_ == nullptr) {
                fail("Undeclared namespace '{@namespacePrefix}' referenced by attribute "
                     "'{@attributeName}'",
                     QN_READER_LOCATION("read_starttag"),
                     {{"namespacePrefix", attribute.prefix()},
                      {"attributeName", attribute.qualified_name()}});
            }
        } else if (attribute.qualified_name() == "xml:space") {
            element.space_ = xml_space(attribute.value());
        }
    }
}

XmlSpace XmlReader::xml_space(std::string_view value) {
    if (value == "preserve") {
        return XmlSpace::preserve;
    }
    if (value != "default") {
        fail("Unexpected value of 'xml:space' attribute: \"{@attributeValue}\" expecting "
             "'preserve' or 'default'",
             QN_READER_LOCATION("read_starttag"), {{"attributeValue", value}});
    }
    return XmlSpace::standard;
}

/// Binds the prefixes that the current element declares.
void XmlReader::bind_prefixes() {
    for (const XmlAttribute& attribute : current_->attributes()) {
        if (attribute.namespace_name() != &xmlns_namespace()) {
            continue;
        }
        auto found = bindings_.find(attribute.local_name());
        if (found == bindings_.end()) {
            found = bindings_.try_emplace(std::string(attribute.local_name())).first;
        } else if (found->second.empty()) {
            --idlePrefixes_;
        }
        found->second.push_back(&attribute.value());
    }
}

/// Removes the bindings of the current element. Keeps a few unbound prefixes for reuse.
void XmlReader::unbind_prefixes() {
    for (const XmlAttribute& attribute : current_->attributes()) {
        if (attribute.namespace_name() != &xmlns_namespace()) {
            continue;
        }
        const auto found = bindings_.find(attribute.local_name());
        found->second.pop_back();
        if (!found->second.empty()) {
            continue;
        }
        if (idlePrefixes_ < most_idle_prefixes) {
            ++idlePrefixes_;
        } else {
            bindings_.erase(found);
        }
    }
}

/// The namespace of the prefix in the current element; null if there is none or an empty value has
/// removed the binding.
const std::string* XmlReader::find_namespace(std::string_view prefix) const noexcept {
    if (prefix == "xml") {
        return &xml_namespace();
    }
    if (prefix == "xmlns") {
        return &xmlns_namespace();
    }
    const auto found = bindings_.find(prefix);
    if (prefix.empty() || found == bindings_.end() || found->second.empty()) {
        return nullptr;
    }
    return found->second.back()->empty() ? nullptr : found->second.back();
}

} // namespace qnxml
