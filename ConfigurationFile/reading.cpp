#include "ConfigurationFile/reading.h"

#include "ConfigurationFile/configuration_file_access.h"
#include "ConfigurationFile/password_cipher.h"
#include "qncertificates/patient_open.h"
#include "qnfile/file_stream.h"
#include "qnxml/stream_tokenizer.h"

namespace vdcertificates {
namespace {

using Element = qnxml::XmlReader::ElementPtr;

constexpr unsigned int first_line = 1;
constexpr std::size_t buffer_size = 4096;

struct PathField {
    const char* element;
    std::string CertificateNode::*field;
};

constexpr PathField path_fields[] = {
    {"PublicKeyPath", &CertificateNode::publicKeyPath},
    {"PrivateKeyPath", &CertificateNode::privateKeyPath},
    {"CertificatePath", &CertificateNode::certificatePath},
    {"TrustedCertificatePath", &CertificateNode::trustedCertificatePath},
};

CertificateNode read_entry(qnxml::XmlReader& reader, const Element& entry, PasswordCipher& cipher) {
    CertificateNode node;
    node.name = entry->qualified_name();
    for_each_child(reader, entry, [&](const Element& child) {
        if (const auto field = path_field(child->qualified_name())) {
            node.*field = reader.read_element_text();
        } else if (child->qualified_name() == "Password") {
            std::string cipherText = reader.read_element_text();
            node.password = cipherText.empty() ? std::string() : cipher.decipher(cipherText);
        }
    });
    return node;
}

/// Leaves no server without an entry if it throws.
void append(ConfigurationFileNodes& nodes, const std::string& server, CertificateNode node) {
    std::vector<CertificateNode> entries;
    entries.push_back(std::move(node));
    const auto [place, is_new] = nodes.notifiers.try_emplace(server, std::move(entries));
    if (!is_new) {
        place->second.push_back(std::move(entries.front()));
    }
}

void read_entries(qnxml::XmlReader& reader, const Element& section, ConfigurationFileNodes& nodes,
                  PasswordCipher& cipher, const ConfigurationFileAccess::Filter& keeps) {
    for_each_entry(reader, section, [&](const Element& entry, const std::string* server) {
        CertificateNode node = read_entry(reader, entry, cipher);
        if (!keeps(server)) {
            return;
        }
        if (server == nullptr) {
            nodes.certificates.push_back(std::move(node));
        } else {
            append(nodes, *server, std::move(node));
        }
    });
}

} // namespace

std::string CertificateNode::*path_field(const std::string& element) noexcept {
    for (const PathField& path : path_fields) {
        if (element == path.element) {
            return path.field;
        }
    }
    return nullptr;
}

void ConfigurationFileAccess::read_section(ConfigurationFile& file, const std::string& nodeName,
                                           ConfigurationFileNodes& nodes, const Filter& keeps,
                                           PasswordCipher& cipher) {
    nodes.certificates.clear();
    nodes.notifiers.clear();
    const std::string path = file.get_configuration_file_path();
    const ConfigurationFileExclusiveAccessLock lock(file.m_configurationFileMutex);
    const auto stream = qncertificates::open_patiently([&] {
        return qnfile::FileReadStream::create(path, qnfile::share_none,
                                              qnfile::flag_sequential_scan);
    });
    qnxml::XmlStreamTokenizer tokenizer(qnuri::UriReference(), first_line, buffer_size, stream);
    qnxml::XmlReader reader(&tokenizer, nullptr);

    reader.next_element();
    if (reader.node_type() != qnxml::XmlNodeType::Element ||
        reader.current_element()->qualified_name() != ConfigurationFile::sm_configurationFile) {
        return; // any other document counts as empty
    }
    for_each_child(reader, reader.current_element(), [&](const Element& section) {
        if (section->qualified_name() == nodeName) {
            read_entries(reader, section, nodes, cipher, keeps);
        }
    });
}

void ConfigurationFileAccess::read_section(ConfigurationFile& file, const std::string& nodeName,
                                           ConfigurationFileNodes& nodes, const Filter& keeps) {
    PasswordCipher cipher(*file.m_certificateKeys, PasswordCipher::Memory::none);
    read_section(file, nodeName, nodes, keeps, cipher);
}

void ConfigurationFile::get_certificate_information(ConfigurationFileNodes& nodes,
                                                    const std::string& nodeName) {
    ConfigurationFileAccess::read_section(*this, nodeName, nodes,
                                          ConfigurationFileAccess::keeps_all);
}

void ConfigurationFile::get_subsystems_certificate_information(ConfigurationFileNodes& nodes) {
    get_certificate_information(nodes, sm_notifiersNode);
}

void ConfigurationFile::get_devices_certificate_information(ConfigurationFileNodes& nodes) {
    get_certificate_information(nodes, sm_devicesNode);
}

void ConfigurationFile::get_media_retrieval_certificate_information(ConfigurationFileNodes& nodes) {
    get_certificate_information(nodes, sm_mediaRetrievalNode);
}

} // namespace vdcertificates
