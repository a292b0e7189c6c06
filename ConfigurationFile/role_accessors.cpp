#include "ConfigurationFile/configuration_file.h"
#include "ConfigurationFile/roles.h"
#include "ConfigurationFile/trace_topic.h"
#include "qncore/string_slice.h"

// The callers' interface says `const bool`; the qualifier is part of it.
#ifdef __GNUC__
#pragma GCC diagnostic ignored "-Wignored-qualifiers"
#endif

namespace vdcertificates {

using Text = const std::string&;

const bool ConfigurationFile::set_cluster_certificate_information(Text publicKeyFilePath,
                                                                  Text privateKeyFilePath,
                                                                  Text certificateFilePath,
                                                                  Text password) {
    return set_role(*this, roles::cluster, qncore::g_emptyString,
                    {{}, publicKeyFilePath, privateKeyFilePath, certificateFilePath, password, {}});
}

const bool ConfigurationFile::get_cluster_certificate_information(std::string& publicKeyFilePath,
                                                                  std::string& privateKeyFilePath,
                                                                  std::string& certificateFilePath,
                                                                  std::string& password) {
    return get_role(
        *this, roles::cluster, qncore::g_emptyString,
        {publicKeyFilePath, privateKeyFilePath, certificateFilePath, password, nullptr});
}

// The accessors by server differ in the role, and in whether it has a trusted path.
#define ACCESSORS_BY_SERVER(name, role)                                                            \
    const bool ConfigurationFile::set_##name##_certificate_information(                            \
        Text serverName, Text publicKeyFilePath, Text privateKeyFilePath,                          \
        Text certificateFilePath, Text password) {                                                 \
        return set_role(                                                                           \
            *this, role, serverName,                                                               \
            {{}, publicKeyFilePath, privateKeyFilePath, certificateFilePath, password, {}});       \
    }                                                                                              \
    const bool ConfigurationFile::get_##name##_certificate_information(                            \
        Text serverName, std::string& publicKeyFilePath, std::string& privateKeyFilePath,          \
        std::string& certificateFilePath, std::string& password) {                                 \
        return get_role(                                                                           \
            *this, role, serverName,                                                               \
            {publicKeyFilePath, privateKeyFilePath, certificateFilePath, password, nullptr});      \
    }

#define ACCESSORS_WITH_TRUSTED_PATH(name, role)                                                    \
    const bool ConfigurationFile::set_##name##_certificate_information(                            \
        Text serverName, Text publicKeyFilePath, Text privateKeyFilePath,                          \
        Text certificateFilePath, Text password, Text trustedCertificateFilePath) {                \
        return set_role(*this, role, serverName,                                                   \
                        {{},                                                                       \
                         publicKeyFilePath,                                                        \
                         privateKeyFilePath,                                                       \
                         certificateFilePath,                                                      \
                         password,                                                                 \
                         trustedCertificateFilePath});                                             \
    }                                                                                              \
    const bool ConfigurationFile::get_##name##_certificate_information(                            \
        Text serverName, std::string& publicKeyFilePath, std::string& privateKeyFilePath,          \
        std::string& certificateFilePath, std::string& password,                                   \
        std::string& trustedCertificateFilePath) {                                                 \
        return get_role(*this, role, serverName,                                                   \
                        {publicKeyFilePath, privateKeyFilePath, certificateFilePath, password,     \
                         &trustedCertificateFilePath});                                            \
    }

ACCESSORS_BY_SERVER(subsystems, roles::subsystems)
ACCESSORS_WITH_TRUSTED_PATH(subsystems_server, roles::subsystems_server)
ACCESSORS_WITH_TRUSTED_PATH(subsystems_remote_client, roles::subsystems_remote_client)
ACCESSORS_WITH_TRUSTED_PATH(remote_client, roles::remote_client)
ACCESSORS_BY_SERVER(webconfig, roles::web_config)
ACCESSORS_WITH_TRUSTED_PATH(devices, roles::device)
ACCESSORS_WITH_TRUSTED_PATH(media_retrieval_server, roles::media_retrieval_server)
ACCESSORS_WITH_TRUSTED_PATH(media_retrieval_client, roles::media_retrieval_client)

#undef ACCESSORS_BY_SERVER
#undef ACCESSORS_WITH_TRUSTED_PATH

const bool
ConfigurationFile::set_additional_certificate_information(const ConfigurationFileNodes& rNodes) {
    QN_TRACE_FUNCTION(
        g_traceTopic,
        "vdcertificates::ConfigurationFile::set_additional_certificate_information()");
    return succeeds([&] { set_subsystems_certificate_information(rNodes); });
}

const bool
ConfigurationFile::get_additional_certificate_information(ConfigurationFileNodes& rNodes) {
    QN_TRACE_FUNCTION(
        g_traceTopic,
        "vdcertificates::ConfigurationFile::get_additional_certificate_information()");
    return succeeds([&] { get_subsystems_certificate_information(rNodes); });
}

} // namespace vdcertificates
