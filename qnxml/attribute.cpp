#include "qnxml/attribute.h"

#include <algorithm>

namespace qnxml {

const std::string& xml_namespace() {
    static const std::string name("http://www.w3.org/XML/1998/namespace");
    return name;
}

const std::string& xmlns_namespace() {
    static const std::string name("http://www.w3.org/2000/xmlns/");
    return name;
}

bool XmlNode::set_name(std::string_view qualifiedName) {
    namespace_ = nullptr;
    // Nodes are reused, mostly for a tag like the one before, so the name is often the same.
    if (name_ == qualifiedName) {
        return false;
    }
    name_ = qualifiedName;
    localNameOffset_ = qualifiedName.find(':') + 1; // npos, no colon, gives 0
    return true;
}

bool XmlNode::matches(std::string_view namespaceName, std::string_view localName) const noexcept {
    const bool namespace_matches =
        namespaceName.data() == nullptr ||
        (namespace_ == nullptr ? namespaceName.empty() : *namespace_ == namespaceName);
    return namespace_matches && (localName.empty() || local_name() == localName);
}

bool XmlNode::is_xml_namespace() const noexcept {
    return namespace_ != nullptr &&
           (namespace_ == &xml_namespace() || *namespace_ == xml_namespace());
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

} // namespace qnxml
