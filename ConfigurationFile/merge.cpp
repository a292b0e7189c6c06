#include "ConfigurationFile/merge.h"

#include <map>
#include <string_view>

#include "ConfigurationFile/configuration_file.h"
#include "ConfigurationFile/password_cipher.h"
#include "qncore/string_conversion.h"
#include "qnxml/escape.h"

namespace vdcertificates {
namespace {

using Entries = std::vector<CertificateNode>;

struct LessNocaseAscii {
    bool operator()(std::string_view left, std::string_view right) const noexcept {
        return qncore::compare_nocase_ascii(left.data(), left.size(), right.data(), right.size()) <
               0;
    }
};

/// An index by name, ignoring the case of letters, so that a merge never costs the square of its
/// input.
template <class Named>
using ByName = std::multimap<std::string_view, Named*, LessNocaseAscii>;

/// Replaces an existing entry, but keeps its spelling.
void overwrite(CertificateNode& existing, const CertificateNode& entry) {
    std::string name = std::move(existing.name);
    existing = entry;
    existing.name = std::move(name);
}

void merge_entries(const Entries& entries, Entries& existing) {
    existing.reserve(existing.size() + entries.size()); // keeps the index's pointers valid
    ByName<CertificateNode> index;
    for (CertificateNode& entry : existing) {
        index.emplace(entry.name, &entry);
    }
    for (const CertificateNode& entry : entries) {
        const auto [first, last] = index.equal_range(entry.name);
        for (auto found = first; found != last; ++found) {
            overwrite(*found->second, entry);
        }
        if (first == last) {
            existing.push_back(entry);
            index.emplace(existing.back().name, &existing.back());
        }
    }
}

void append_element(std::string& text, const char* name, const std::string& content) {
    text.append("<").append(name).append(">").append(content);
    text.append("</").append(name).append(">");
}

/// Appends entries in the format of the file.
void append_entries(std::string& text, const Entries& entries, PasswordCipher& cipher) {
    for (const CertificateNode& entry : entries) {
        text.append("<").append(entry.name).append(">");
        append_element(text, "PublicKeyPath", entry.publicKeyPath);
        append_element(text, "PrivateKeyPath", entry.privateKeyPath);
        append_element(text, "CertificatePath", entry.certificatePath);
        append_element(text, "Password",
                       entry.password.empty() ? std::string() : cipher.encipher(entry.password));
        // Required: only this value is escaped.
        append_element(text, "TrustedCertificatePath",
                       qnxml::escape_text(entry.trustedCertificatePath));
        text.append("</").append(entry.name).append(">");
    }
}

} // namespace

void merge(const ConfigurationFileNodes& newNodes, ConfigurationFileNodes& existingNodes) {
    merge_entries(newNodes.certificates, existingNodes.certificates);
    ByName<Entries> index;
    for (auto& [key, entries] : existingNodes.notifiers) {
        index.emplace(key, &entries);
    }
    for (const auto& [key, entries] : newNodes.notifiers) {
        const auto [first, last] = index.equal_range(key);
        for (auto found = first; found != last; ++found) {
            merge_entries(entries, *found->second);
        }
        if (first == last) {
            index.emplace(key, &(existingNodes.notifiers[key] = entries));
        }
    }
}

void append_section(std::string& text, const std::string& nodeName,
                    const ConfigurationFileNodes& nodes, PasswordCipher& cipher) {
    text.append("<").append(nodeName).append(">");
    append_entries(text, nodes.certificates, cipher);
    for (const auto& [key, entries] : nodes.notifiers) {
        text.append("<Notifier Name=\"").append(key).append("\">");
        append_entries(text, entries, cipher);
        text.append("</Notifier>");
    }
    text.append("</").append(nodeName).append(">");
}

void ConfigurationFile::set_certificate_information(const ConfigurationFileNodes& newNodes,
                                                    ConfigurationFileNodes& existingNodes,
                                                    const std::string& nodeName,
                                                    std::string& text) {
    if (&newNodes != &existingNodes) { // merging a section with itself must not change it
        merge(newNodes, existingNodes);
    }
    PasswordCipher cipher(*m_certificateKeys, PasswordCipher::Memory::none);
    std::string section;
    append_section(section, nodeName, existingNodes, cipher);
    text = std::move(section);
}

} // namespace vdcertificates
