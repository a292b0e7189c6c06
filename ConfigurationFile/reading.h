#pragma once

#include <string>

#include "ConfigurationFile/certificate_node.h"
#include "qnxml/reader.h"

// The structure of the file, for all that read it.
namespace vdcertificates {

/// Returns the field that holds the text of this element of an entry; null if it is not a path.
std::string CertificateNode::*path_field(const std::string& element) noexcept;

/// Calls `visit` with each child element of `parent`, the reader's current element.
template <class Visit>
void for_each_child(qnxml::XmlReader& reader, qnxml::XmlReader::ElementPtr parent,
                    const Visit& visit) {
    while (reader.next_child_element(parent)) {
        visit(reader.current_element());
    }
}

/// Calls `visit` with each entry of a section and its server; null if it is directly in the
/// section.
template <class Visit>
void for_each_entry(qnxml::XmlReader& reader, const qnxml::XmlReader::ElementPtr& section,
                    const Visit& visit) {
    for_each_child(reader, section, [&](const qnxml::XmlReader::ElementPtr& child) {
        if (child->qualified_name() != "Notifier") {
            visit(child, static_cast<const std::string*>(nullptr));
            return;
        }
        const auto* name = child->find_attribute("Name");
        const std::string server = name != nullptr ? name->value() : std::string();
        for_each_child(reader, child,
                       [&](const qnxml::XmlReader::ElementPtr& entry) { visit(entry, &server); });
    });
}

} // namespace vdcertificates
