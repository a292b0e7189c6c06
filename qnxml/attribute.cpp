#include "qnxml/attribute.h"

#include <algorithm>

namespace qnxml {

namespace {

constexpr std::size_t first_room = 8;
constexpr std::size_t most_compared = 32;
constexpr std::size_t most_kept_slots = 32;
constexpr std::size_t most_kept_bytes = 256;

bool same_text(const std::string* left, const std::string& right) noexcept {
    return left == &right || (left != nullptr && *left == right);
}

} // namespace

const std::string& xml_namespace() {
    static const std::string name("http://www.w3.org/XML/1998/namespace");
    return name;
}

const std::string& xmlns_namespace() {
    static const std::string name("http://www.w3.org/2000/xmlns/");
    return name;
}

void XmlNode::let_go_if_large(std::string& text) noexcept {
    if (text.capacity() > most_kept_bytes) {
        text = std::string();
    }
}

bool XmlNode::set_name(std::string_view qualifiedName) {
    name_.assign(qualifiedName);
    localNameOffset_ = qualifiedName.find(':') + 1; // npos, no colon, gives 0
    namespace_ = nullptr;
    return localNameOffset_ == 0 || localNameOffset_ != name_.size();
}

bool XmlNode::matches(std::string_view namespaceName, std::string_view localName) const noexcept {
    const bool namespace_matches =
        namespaceName.data() == nullptr ||
        (namespace_ == nullptr ? namespaceName.empty() : *namespace_ == namespaceName);
    return namespace_matches && (localName.empty() || local_name() == localName);
}

bool XmlNode::is_xml_namespace() const noexcept {
    return same_text(namespace_, xml_namespace());
}

const XmlAttribute* find_attribute(const XmlAttribute* begin, const XmlAttribute* end,
                                   std::string_view qualifiedName) noexcept {
    return std::find_if(begin, end, [qualifiedName](const XmlAttribute& attribute) {
        return attribute.qualified_name() == qualifiedName;
    });
}

const XmlAttribute* find_attribute(const XmlAttribute* begin, const XmlAttribute* end,
                                   std::string_view namespaceName,
                                   std::string_view localName) noexcept {
    return std::find_if(begin, end, [namespaceName, localName](const XmlAttribute& attribute) {
        return attribute.matches(namespaceName, localName);
    });
}

XmlAttribute& XmlAttributes::prepare() {
    if (slots_.empty()) {
        slots_.reserve(first_room);
    }
    if (count_ == slots_.size()) {
        slots_.emplace_back();
    }
    return slots_[count_];
}

/// Compares the prepared name with all others while they are few, so that it costs nothing, and
/// looks it up in their order when they are many, so that no document can make it cost much.
bool XmlAttributes::is_new_name() {
    const XmlAttribute* const added = &slots_[count_];
    if (count_ < most_compared) {
        return find_attribute(slots_.data(), added, added->qualified_name()) == added;
    }
    for (std::size_t slot = names_.size(); slot < count_; ++slot) {
        names_.insert(slot);
    }
    return names_.insert(count_).second;
}

bool XmlAttributes::add_attribute() {
    XmlAttribute& added = slots_[count_];
    if (!is_new_name()) {
        return false;
    }
    if (added.prefix() == "xml") {
        added.namespace_ = &xml_namespace();
    } else if (added.prefix() == "xmlns") {
        added.namespace_ = &xmlns_namespace();
        bindPrefixes_ = true;
    }
    ++count_;
    return true;
}

void XmlAttributes::clear() noexcept {
    for (XmlAttribute& attribute : view()) {
        XmlNode::let_go_if_large(attribute.name_);
        XmlNode::let_go_if_large(attribute.value_);
    }
    count_ = 0;
    bindPrefixes_ = false;
    names_.clear();
    if (slots_.size() > most_kept_slots) {
        slots_ = {};
    }
}

} // namespace qnxml
