#include "ConfigurationFile/configuration_file.h"
#include "ConfigurationFile/roles.h"
#include "ConfigurationFile/trace_topic.h"
#include "qncore/string_slice.h"

// The callers' interface says `const bool`; the qualifier is part of it.
#ifdef __GNUC__
#pragma GCC diagnostic ignored "-Wignored-qualifiers"
#endif

namespace vdcertificates {

const bool ConfigurationFile::set_cluster_certificate_information(
    const std::string& rClusterCertificatePublicKeyFilePath,
    const std::string& rClusterCertificatePrivateKeyFilePath,
    const std::string& rClusterCertificateFilePath, const std::string& rPassword) {
    return set_role(*this, roles::cluster, qncore::g_emptyString,
                    {{},
                     rClusterCertificatePublicKeyFilePath,
                     rClusterCertificatePrivateKeyFilePath,
                     rClusterCertificateFilePath,
                     rPassword,
                     {}});
}

const bool ConfigurationFile::get_cluster_certificate_information(
    std::string& rClusterCertificatePublicKeyFilePath,
    std::string& rClusterCertificatePrivateKeyFilePath, std::string& rClusterCertificateFilePath,
    std::string& rPassword) {
    return get_role(*this, roles::cluster, qncore::g_emptyString,
                    {rClusterCertificatePublicKeyFilePath, rClusterCertificatePrivateKeyFilePath,
                     rClusterCertificateFilePath, rPassword, nullptr});
}

const bool ConfigurationFile::set_subsystems_certificate_information(
    const std::string& rServerName, const std::string& rSubsystemsCertificatePublicKeyFilePath,
    const std::string& rSubsystemsCertificatePrivateKeyFilePath,
    const std::string& rSubsystemsCertificateFilePath, const std::string& rPassword) {
    return set_role(*this, roles::subsystems, rServerName,
                    {{},
                     rSubsystemsCertificatePublicKeyFilePath,
                     rSubsystemsCertificatePrivateKeyFilePath,
                     rSubsystemsCertificateFilePath,
                     rPassword,
                     {}});
}

const bool ConfigurationFile::get_subsystems_certificate_information(
    const std::string& rServerName, std::string& rSubsystemsCertificatePublicKeyFilePath,
    std::string& rSubsystemsCertificatePrivateKeyFilePath,
    std::string& rSubsystemsCertificateFilePath, std::string& rPassword) {
    return get_role(*this, roles::subsystems, rServerName,
                    {rSubsystemsCertificatePublicKeyFilePath,
                     rSubsystemsCertificatePrivateKeyFilePath, rSubsystemsCertificateFilePath,
                     rPassword, nullptr});
}

const bool ConfigurationFile::set_subsystems_server_certificate_information(
    const std::string& rServerName,
    const std::string& rSubsystemsServerCertificatePublicKeyFilePath,
    const std::string& rSubsystemsServerCertificatePrivateKeyFilePath,
    const std::string& rSubsystemsServerCertificateFilePath, const std::string& rPassword,
    const std::string& rTrustedCertificateFilePath) {
    return set_role(*this, roles::subsystems_server, rServerName,
                    {{},
                     rSubsystemsServerCertificatePublicKeyFilePath,
                     rSubsystemsServerCertificatePrivateKeyFilePath,
                     rSubsystemsServerCertificateFilePath,
                     rPassword,
                     rTrustedCertificateFilePath});
}

const bool ConfigurationFile::get_subsystems_server_certificate_information(
    const std::string& rServerName, std::string& rSubsystemsServerCertificatePublicKeyFilePath,
    std::string& rSubsystemsServerCertificatePrivateKeyFilePath,
    std::string& rSubsystemsServerCertificateFilePath, std::string& rPassword,
    std::string& rTrustedCertificateFilePath) {
    return get_role(*this, roles::subsystems_server, rServerName,
                    {rSubsystemsServerCertificatePublicKeyFilePath,
                     rSubsystemsServerCertificatePrivateKeyFilePath,
                     rSubsystemsServerCertificateFilePath, rPassword,
                     &rTrustedCertificateFilePath});
}

const bool ConfigurationFile::set_subsystems_remote_client_certificate_information(
    const std::string& rServerName,
    const std::string& rSubsystemsRemoteClientCertificatePublicKeyFilePath,
    const std::string& rSubsystemsRemoteClientCertificatePrivateKeyFilePath,
    const std::string& rSubsystemsRemoteClientCertificateFilePath, const std::string& rPassword,
    const std::string& rTrustedCertificateFilePath) {
    return set_role(*this, roles::subsystems_remote_client, rServerName,
                    {{},
                     rSubsystemsRemoteClientCertificatePublicKeyFilePath,
                     rSubsystemsRemoteClientCertificatePrivateKeyFilePath,
                     rSubsystemsRemoteClientCertificateFilePath,
                     rPassword,
                     rTrustedCertificateFilePath});
}

const bool ConfigurationFile::get_subsystems_remote_client_certificate_information(
    const std::string& rServerName,
    std::string& rSubsystemsRemoteClientCertificatePublicKeyFilePath,
    std::string& rSubsystemsRemoteClientCertificatePrivateKeyFilePath,
    std::string& rSubsystemsRemoteClientCertificateFilePath, std::string& rPassword,
    std::string& rTrustedCertificateFilePath) {
    return get_role(*this, roles::subsystems_remote_client, rServerName,
                    {rSubsystemsRemoteClientCertificatePublicKeyFilePath,
                     rSubsystemsRemoteClientCertificatePrivateKeyFilePath,
                     rSubsystemsRemoteClientCertificateFilePath, rPassword,
                     &rTrustedCertificateFilePath});
}

const bool ConfigurationFile::set_remote_client_certificate_information(
    const std::string& rServerName, const std::string& rRemoteClientCertificatePublicKeyFilePath,
    const std::string& rRemoteClientCertificatePrivateKeyFilePath,
    const std::string& rRemoteClientCertificateFilePath, const std::string& rPassword,
    const std::string& rTrustedCertificateFilePath) {
    return set_role(*this, roles::remote_client, rServerName,
                    {{},
                     rRemoteClientCertificatePublicKeyFilePath,
                     rRemoteClientCertificatePrivateKeyFilePath,
                     rRemoteClientCertificateFilePath,
                     rPassword,
                     rTrustedCertificateFilePath});
}

const bool ConfigurationFile::get_remote_client_certificate_information(
    const std::string& rServerName, std::string& rRemoteClientCertificatePublicKeyFilePath,
    std::string& rRemoteClientCertificatePrivateKeyFilePath,
    std::string& rRemoteClientCertificateFilePath, std::string& rPassword,
    std::string& rTrustedCertificateFilePath) {
    return get_role(*this, roles::remote_client, rServerName,
                    {rRemoteClientCertificatePublicKeyFilePath,
                     rRemoteClientCertificatePrivateKeyFilePath, rRemoteClientCertificateFilePath,
                     rPassword, &rTrustedCertificateFilePath});
}

const bool ConfigurationFile::set_webconfig_certificate_information(
    const std::string& rServerName, const std::string& rWebConfigCertificatePublicKeyFilePath,
    const std::string& rWebConfigCertificatePrivateKeyFilePath,
    const std::string& rWebConfigCertificateFilePath, const std::string& rPassword) {
    return set_role(*this, roles::web_config, rServerName,
                    {{},
                     rWebConfigCertificatePublicKeyFilePath,
                     rWebConfigCertificatePrivateKeyFilePath,
                     rWebConfigCertificateFilePath,
                     rPassword,
                     {}});
}

const bool ConfigurationFile::get_webconfig_certificate_information(
    const std::string& rServerName, std::string& rWebConfigCertificatePublicKeyFilePath,
    std::string& rWebConfigCertificatePrivateKeyFilePath,
    std::string& rWebConfigCertificateFilePath, std::string& rPassword) {
    return get_role(*this, roles::web_config, rServerName,
                    {rWebConfigCertificatePublicKeyFilePath,
                     rWebConfigCertificatePrivateKeyFilePath, rWebConfigCertificateFilePath,
                     rPassword, nullptr});
}

const bool ConfigurationFile::set_devices_certificate_information(
    const std::string& rServerName, const std::string& rDevicesCertificatePublicKeyFilePath,
    const std::string& rDevicesCertificatePrivateKeyFilePath,
    const std::string& rDevicesCertificateFilePath, const std::string& rPassword,
    const std::string& rTrustedCertificateFilePath) {
    return set_role(*this, roles::device, rServerName,
                    {{},
                     rDevicesCertificatePublicKeyFilePath,
                     rDevicesCertificatePrivateKeyFilePath,
                     rDevicesCertificateFilePath,
                     rPassword,
                     rTrustedCertificateFilePath});
}

const bool ConfigurationFile::get_devices_certificate_information(
    const std::string& rServerName, std::string& rDevicesCertificatePublicKeyFilePath,
    std::string& rDevicesCertificatePrivateKeyFilePath, std::string& rDevicesCertificateFilePath,
    std::string& rPassword, std::string& rTrustedCertificateFilePath) {
    return get_role(*this, roles::device, rServerName,
                    {rDevicesCertificatePublicKeyFilePath, rDevicesCertificatePrivateKeyFilePath,
                     rDevicesCertificateFilePath, rPassword, &rTrustedCertificateFilePath});
}

const bool ConfigurationFile::set_media_retrieval_server_certificate_information(
    const std::string& rServerName,
    const std::string& rMediaRetrievalServerCertificatePublicKeyFilePath,
    const std::string& rMediaRetrievalServerCertificatePrivateKeyFilePath,
    const std::string& rMediaRetrievalServerCertificateFilePath, const std::string& rPassword,
    const std::string& rTrustedCertificateFilePath) {
    return set_role(*this, roles::media_retrieval_server, rServerName,
                    {{},
                     rMediaRetrievalServerCertificatePublicKeyFilePath,
                     rMediaRetrievalServerCertificatePrivateKeyFilePath,
                     rMediaRetrievalServerCertificateFilePath,
                     rPassword,
                     rTrustedCertificateFilePath});
}

const bool ConfigurationFile::get_media_retrieval_server_certificate_information(
    const std::string& rServerName, std::string& rMediaRetrievalServerCertificatePublicKeyFilePath,
    std::string& rMediaRetrievalServerCertificatePrivateKeyFilePath,
    std::string& rMediaRetrievalServerCertificateFilePath, std::string& rPassword,
    std::string& rTrustedCertificateFilePath) {
    return get_role(*this, roles::media_retrieval_server, rServerName,
                    {rMediaRetrievalServerCertificatePublicKeyFilePath,
                     rMediaRetrievalServerCertificatePrivateKeyFilePath,
                     rMediaRetrievalServerCertificateFilePath, rPassword,
                     &rTrustedCertificateFilePath});
}

const bool ConfigurationFile::set_media_retrieval_client_certificate_information(
    const std::string& rServerName,
    const std::string& rMediaRetrievalClientCertificatePublicKeyFilePath,
    const std::string& rMediaRetrievalClientCertificatePrivateKeyFilePath,
    const std::string& rMediaRetrievalClientCertificateFilePath, const std::string& rPassword,
    const std::string& rTrustedCertificateFilePath) {
    return set_role(*this, roles::media_retrieval_client, rServerName,
                    {{},
                     rMediaRetrievalClientCertificatePublicKeyFilePath,
                     rMediaRetrievalClientCertificatePrivateKeyFilePath,
                     rMediaRetrievalClientCertificateFilePath,
                     rPassword,
                     rTrustedCertificateFilePath});
}

const bool ConfigurationFile::get_media_retrieval_client_certificate_information(
    const std::string& rServerName, std::string& rMediaRetrievalClientCertificatePublicKeyFilePath,
    std::string& rMediaRetrievalClientCertificatePrivateKeyFilePath,
    std::string& rMediaRetrievalClientCertificateFilePath, std::string& rPassword,
    std::string& rTrustedCertificateFilePath) {
    return get_role(*this, roles::media_retrieval_client, rServerName,
                    {rMediaRetrievalClientCertificatePublicKeyFilePath,
                     rMediaRetrievalClientCertificatePrivateKeyFilePath,
                     rMediaRetrievalClientCertificateFilePath, rPassword,
                     &rTrustedCertificateFilePath});
}

const bool
ConfigurationFile::set_additional_certificate_information(const ConfigurationFileNodes& rNodes) {
    QN_TRACE_FUNCTION(
        g_traceTopic,
        "vdcertificates::ConfigurationFile::set_additional_certificate_information()");
    try {
        set_subsystems_certificate_information(rNodes);
        return true;
    } catch (...) {
        return false;
    }
}

const bool
ConfigurationFile::get_additional_certificate_information(ConfigurationFileNodes& rNodes) {
    QN_TRACE_FUNCTION(
        g_traceTopic,
        "vdcertificates::ConfigurationFile::get_additional_certificate_information()");
    try {
        get_subsystems_certificate_information(rNodes);
        return true;
    } catch (...) {
        return false;
    }
}

} // namespace vdcertificates
