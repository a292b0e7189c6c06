#include <unordered_map>

#include "ConfigurationFile/configuration_file.h"
#include "qncore/string_conversion.h"
#include "qnxml/escape.h"

namespace vdcertificates {
namespace {

using Entries = std::vector<CertificateNode>;

/// Overwrites every entry of the new one's name, whose spelling stays, or appends the new one.
void merge_entry(const CertificateNode& entry, Entries& existing) {
    bool found = false;
    for (CertificateNode& candidate : existing) {
        if (qncore::equal_nocase_ascii(entry.name, candidate.name)) {
            found = true;
            candidate.publicKeyPath = entry.publicKeyPath;
            candidate.privateKeyPath = entry.privateKeyPath;
            candidate.certificatePath = entry.certificatePath;
            candidate.password = entry.password;
            candidate.trustedCertificatePath = entry.trustedCertificatePath;
        }
    }
    if (!found) {
        existing.push_back(entry);
    }
}

void merge_entries(const Entries& entries, Entries& existing) {
    for (const CertificateNode& entry : entries) {
        merge_entry(entry, existing);
    }
}

/// The keys of a section by their folded form, which several spellings may share.
class ServerIndex {
  public:
    explicit ServerIndex(ConfigurationFileNodes& nodes) {
        for (auto& [key, entries] : nodes.notifiers) {
            add(key, entries);
        }
    }

    std::vector<Entries*>& find(const std::string& key) {
        return spellings_[qncore::to_lower_ascii(key)];
    }

    void add(const std::string& key, Entries& entries) { find(key).push_back(&entries); }

  private:
    std::unordered_map<std::string, std::vector<Entries*>> spellings_;
};

void merge(const ConfigurationFileNodes& newNodes, ConfigurationFileNodes& existingNodes) {
    merge_entries(newNodes.certificates, existingNodes.certificates);
    ServerIndex index(existingNodes);
    for (const auto& [key, entries] : newNodes.notifiers) {
        for (Entries* existing : index.find(key)) {
            merge_entries(entries, *existing);
        }
        if (index.find(key).empty()) {
            index.add(key, existingNodes.notifiers[key] = entries);
        }
    }
}

void append_element(std::string& text, const char* name, const std::string& content) {
    text.append("<").append(name).append(">").append(content);
    text.append("</").append(name).append(">");
}

/// Appends entries in the form that the file gives them; `encipher` turns a clear password into
/// its stored text.
template <class Encipher>
void append_entries(std::string& text, const Entries& entries, const Encipher& encipher) {
    for (const CertificateNode& entry : entries) {
        text.append("<").append(entry.name).append(">");
        append_element(text, "PublicKeyPath", entry.publicKeyPath);
        append_element(text, "PrivateKeyPath", entry.privateKeyPath);
        append_element(text, "CertificatePath", entry.certificatePath);
        append_element(text, "Password",
                       entry.password.empty() ? std::string() : encipher(entry.password));
        // Required: this value alone is escaped, all others stand as they are.
        append_element(text, "TrustedCertificatePath",
                       qnxml::escape_text(entry.trustedCertificatePath));
        text.append("</").append(entry.name).append(">");
    }
}

} // namespace

void ConfigurationFile::set_certificate_information(const ConfigurationFileNodes& newNodes,
                                                    ConfigurationFileNodes& existingNodes,
                                                    const std::string& nodeName,
                                                    std::string& text) {
    merge(newNodes, existingNodes);
    const auto encipher = [this](const std::string& password) {
        return encipher_password(password);
    };
    std::string section = "<" + nodeName + ">";
    append_entries(section, existingNodes.certificates, encipher);
    for (const auto& [key, entries] : existingNodes.notifiers) {
        section.append("<Notifier Name=\"").append(key).append("\">");
        append_entries(section, entries, encipher);
        section.append("</Notifier>");
    }
    section.append("</").append(nodeName).append(">");
    text = std::move(section);
}

} // namespace vdcertificates
