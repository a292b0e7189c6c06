#include "ConfigurationFile/roles.h"

#include <optional>
#include <stdexcept>

#include "ConfigurationFile/machine_name.h"
#include "ConfigurationFile/trace_topic.h"
#include "qncore/string_conversion.h"

namespace vdcertificates {

using Access = ConfigurationFileAccess;

#define FUNCTIONS(name)                                                                            \
    .setter = "vdcertificates::ConfigurationFile::set_" name "_certificate_information()",         \
    .getter = "vdcertificates::ConfigurationFile::get_" name "_certificate_information()"

// clang-format off
const Role roles::cluster{
    .element = ConfigurationFile::sm_clusterCertificate, .section = Access::notifiers, FUNCTIONS("cluster"),
    .trace_format = "rClusterCertificatePublicKeyFilePath: {}, rClusterCertificatePrivateKeyFilePath: {}, rClusterCertificateFilePath: {}",
    .by_server = false,
    .has_trusted_path = false};
const Role roles::subsystems{
    .element = ConfigurationFile::sm_subsystemsCertificate, .section = Access::notifiers, FUNCTIONS("subsystems"),
    .trace_format = "rServerName: {}, rSubsystemsCertificatePublicKeyFilePath: {}, rSubsystemsCertificatePrivateKeyFilePath: {}, rSubsystemsCertificateFilePath: {}",
    .has_trusted_path = false};
const Role roles::subsystems_server{
    .element = ConfigurationFile::sm_subsystemsServerCertificate, .section = Access::notifiers, FUNCTIONS("subsystems_server"),
    .trace_format = "rServerName: {}, rSubsystemsServerCertificatePublicKeyFilePath: {}, rSubsystemsServerCertificatePrivateKeyFilePath: {}, rSubsystemsServerCertificateFilePath: {}, rTrustedCertificateFilePath: {}"};
const Role roles::subsystems_remote_client{
    .element = ConfigurationFile::sm_subsystemsRemoteClientCertificate, .section = Access::notifiers, FUNCTIONS("subsystems_remote_client"),
    .trace_format = "rServerName: {}, rSubsystemsRemoteClientCertificatePublicKeyFilePath: {}, rSubsystemsRemoteClientCertificatePrivateKeyFilePath: {}, rSubsystemsRemoteClientCertificateFilePath: {}, rTrustedCertificateFilePath: {}",
    .tries_short_name = true};
const Role roles::remote_client{
    .element = ConfigurationFile::sm_remoteClientCertificate, .section = Access::notifiers, FUNCTIONS("remote_client"),
    .trace_format = "rServerName: {}, rRemoteClientCertificatePublicKeyFilePath: {}, rRemoteClientCertificatePrivateKeyFilePath: {}, rRemoteClientCertificateFilePath: {}, rTrustedCertificateFilePath: {}"};
const Role roles::web_config{
    .element = ConfigurationFile::sm_webConfigCertificate, .section = Access::notifiers, FUNCTIONS("webconfig"),
    .trace_format = "rServerName: {}, rWebConfigCertificatePublicKeyFilePath: {}, rWebConfigCertificatePrivateKeyFilePath: {}, rWebConfigCertificateFilePath: {}",
    .has_trusted_path = false};
const Role roles::device{
    .element = ConfigurationFile::sm_deviceCertificate, .section = Access::devices, FUNCTIONS("devices"),
    .trace_format = "rServerName: {}, rDevicesCertificatePublicKeyFilePath: {}, rDevicesCertificatePrivateKeyFilePath: {}, rDevicesCertificateFilePath: {}, rTrustedCertificateFilePath: {}"};
const Role roles::media_retrieval_server{
    .element = ConfigurationFile::sm_mediaRetrievalServerCertificate, .section = Access::media_retrieval, FUNCTIONS("media_retrieval_server"),
    .trace_format = "rServerName: {}, rMediaRetrievalServerCertificatePublicKeyFilePath: {}, rMediaRetrievalServerCertificatePrivateKeyFilePath: {}, rMediaRetrievalServerCertificateFilePath: {}, rTrustedCertificateFilePath: {}"};
const Role roles::media_retrieval_client{
    .element = ConfigurationFile::sm_mediaRetrievalClientCertificate, .section = Access::media_retrieval, FUNCTIONS("media_retrieval_client"),
    .trace_format = "rServerName: {}, rMediaRetrievalClientCertificatePublicKeyFilePath: {}, rMediaRetrievalClientCertificatePrivateKeyFilePath: {}, rMediaRetrievalClientCertificateFilePath: {}, rTrustedCertificateFilePath: {}"};
// clang-format on

#undef FUNCTIONS

namespace {

/// Traces the arguments of an accessor except the password.
void trace_arguments(const Role& role, const char* function, const std::string& serverName,
                     const std::string& publicKey, const std::string& privateKey,
                     const std::string& certificate, const std::string* trustedPath) {
    if (!qntrace::is_enabled(g_traceTopic, qntrace::level_note)) {
        return;
    }
    qntrace::TraceMessage message(g_traceTopic, qntrace::level_note, function, __FILE__, __LINE__,
                                  role.trace_format);
    message.msg_type(qntrace::eMsgTypeUser).user_msg_type(qntrace::eUserMsgNote);
    if (role.by_server) {
        message << serverName;
    }
    message << publicKey << privateKey << certificate;
    if (role.has_trusted_path) {
        message << *trustedPath;
    }
}

/// The entries in which to search for the role's entry; null if there are none. Only the first key
/// that equals the name counts.
const std::vector<CertificateNode>* find_entries(const ConfigurationFileNodes& nodes,
                                                 const Role& role, const std::string& serverName) {
    if (!role.by_server) {
        return &nodes.certificates;
    }
    for (const auto& [key, entries] : nodes.notifiers) {
        if (qncore::equal_nocase_ascii(key, serverName)) {
            return &entries;
        }
    }
    return nullptr;
}

/// Assigns the outputs from the first entry of the role, if there is one.
void search(const ConfigurationFileNodes& nodes, const Role& role, const std::string& serverName,
            const RoleOutputs& outputs) {
    const std::vector<CertificateNode>* entries = find_entries(nodes, role, serverName);
    if (entries == nullptr) {
        return;
    }
    for (const CertificateNode& entry : *entries) {
        if (qncore::equal_nocase_ascii(entry.name, role.element)) {
            outputs.public_key = entry.publicKeyPath;
            outputs.private_key = entry.privateKeyPath;
            outputs.certificate = entry.certificatePath;
            outputs.password = entry.password;
            if (role.has_trusted_path) {
                *outputs.trusted_path = entry.trustedCertificatePath;
            }
            return;
        }
    }
}

/// True for what may be an address or a name with a domain.
bool has_short_name(const std::string& serverName) {
    return serverName.find_first_of(".:") != std::string::npos;
}

/// The name for the second attempt: empty for a plain short name, nullopt if the conversion failed.
std::optional<std::string> short_host_name(const Role& role, const std::string& serverName) {
    std::string name;
    if (has_short_name(serverName)) {
        try {
            name = auto_search_string().to_host_name(serverName);
        } catch (const std::runtime_error& error) {
            QN_TRACE_ERROR(g_traceTopic, role.getter, "{}", error.what());
            return std::nullopt;
        }
    }
    QN_TRACE_NOTE(g_traceTopic, role.getter, "Checking with serverNameToSearchFor: {}", name);
    return name;
}

} // namespace

bool set_role(ConfigurationFile& file, const Role& role, const std::string& serverName,
              CertificateNode entry) {
    QN_TRACE_FUNCTION(g_traceTopic, role.setter);
    trace_arguments(role, role.setter, serverName, entry.publicKeyPath, entry.privateKeyPath,
                    entry.certificatePath, &entry.trustedCertificatePath);
    entry.name = role.element;
    ConfigurationFileNodes nodes;
    (role.by_server ? nodes.notifiers[serverName] : nodes.certificates).push_back(std::move(entry));
    return succeeds([&] { (file.*role.section.write)(nodes); });
}

bool get_role(ConfigurationFile& file, const Role& role, const std::string& serverName,
              const RoleOutputs& outputs) {
    QN_TRACE_FUNCTION(g_traceTopic, role.getter);
    // Keeps only the entries that the search can use.
    const bool any_server = role.tries_short_name && has_short_name(serverName);
    const auto keeps = [&](const std::string* server) {
        return role.by_server ? server != nullptr &&
                                    (any_server || qncore::equal_nocase_ascii(*server, serverName))
                              : server == nullptr;
    };
    ConfigurationFileNodes nodes;
    if (!succeeds([&] { Access::read_section(file, role.section.name, nodes, keeps); })) {
        return false;
    }
    search(nodes, role, serverName, outputs);
    // Required: the outputs decide, not whether the first search found the entry.
    if (role.tries_short_name && outputs.certificate.empty() && outputs.trusted_path->empty()) {
        const std::optional<std::string> name = short_host_name(role, serverName);
        if (!name) {
            return false;
        }
        if (!name->empty()) {
            search(nodes, role, *name, outputs);
        }
    }
    trace_arguments(role, role.getter, serverName, outputs.public_key, outputs.private_key,
                    outputs.certificate, outputs.trusted_path);
    return true;
}

} // namespace vdcertificates
