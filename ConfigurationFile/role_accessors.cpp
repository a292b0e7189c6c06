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

const bool ConfigurationFile::set_cluster_certificate_information(Text publicKey, Text privateKey,
                                                                  Text certificate,
                                                                  Text password) {
    return set_role(*this, roles::cluster, qncore::g_emptyString,
                    {{}, publicKey, privateKey, certificate, password, {}});
}

const bool ConfigurationFile::get_cluster_certificate_information(std::string& publicKey,
                                                                  std::string& privateKey,
                                                                  std::string& certificate,
                                                                  std::string& password) {
    return get_role(*this, roles::cluster, qncore::g_emptyString,
                    {publicKey, privateKey, certificate, password, nullptr});
}

// The accessors by server differ in the role, and in whether it has a trusted path.
#define ACCESSORS_BY_SERVER(name, role)                                                            \
    const bool ConfigurationFile::set_##name##_certificate_information(                            \
        Text server, Text publicKey, Text privateKey, Text certificate, Text password) {           \
        return set_role(*this, role, server,                                                       \
                        {{}, publicKey, privateKey, certificate, password, {}});                   \
    }                                                                                              \
    const bool ConfigurationFile::get_##name##_certificate_information(                            \
        Text server, std::string& publicKey, std::string& privateKey, std::string& certificate,    \
        std::string& password) {                                                                   \
        return get_role(*this, role, server,                                                       \
                        {publicKey, privateKey, certificate, password, nullptr});                  \
    }

#define ACCESSORS_WITH_TRUSTED_PATH(name, role)                                                    \
    const bool ConfigurationFile::set_##name##_certificate_information(                            \
        Text server, Text publicKey, Text privateKey, Text certificate, Text password,             \
        Text trusted) {                                                                            \
        return set_role(*this, role, server,                                                       \
                        {{}, publicKey, privateKey, certificate, password, trusted});              \
    }                                                                                              \
    const bool ConfigurationFile::get_##name##_certificate_information(                            \
        Text server, std::string& publicKey, std::string& privateKey, std::string& certificate,    \
        std::string& password, std::string& trusted) {                                             \
        return get_role(*this, role, server,                                                       \
                        {publicKey, privateKey, certificate, password, &trusted});                 \
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

const bool ConfigurationFile::set_additional_certificate_information(
    const ConfigurationFileNodes& rNodes) {
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
