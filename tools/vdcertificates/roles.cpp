#include "tools/vdcertificates/roles.h"

#include <algorithm>

#include "ConfigurationFile/configuration_file_access.h"
#include "qncore/string_conversion.h"

namespace tool {

const std::array<Role, 9>& roles() {
    using File = vdcertificates::ConfigurationFile;
    static const std::array<Role, 9> all{{
        {"cluster", File::sm_clusterCertificate, File::sm_notifiersNode, false, false},
        {"subsystems", File::sm_subsystemsCertificate, File::sm_notifiersNode, true, false},
        {"subsystems-server", File::sm_subsystemsServerCertificate, File::sm_notifiersNode, true,
         true},
        {"subsystems-remote-client", File::sm_subsystemsRemoteClientCertificate,
         File::sm_notifiersNode, true, true, true},
        {"remote-client", File::sm_remoteClientCertificate, File::sm_notifiersNode, true, true},
        {"web-config", File::sm_webConfigCertificate, File::sm_notifiersNode, true, false},
        {"sip-device", File::sm_deviceCertificate, File::sm_devicesNode, true, true},
        {"media-retrieval-server", File::sm_mediaRetrievalServerCertificate,
         File::sm_mediaRetrievalNode, true, true},
        {"media-retrieval-client", File::sm_mediaRetrievalClientCertificate,
         File::sm_mediaRetrievalNode, true, true},
    }};
    return all;
}

const Role* find_role(std::string_view name) {
    const auto found = std::ranges::find(roles(), name, &Role::name);
    return found != roles().end() ? &*found : nullptr;
}

const Role* find_role_by_element(std::string_view element) {
    const auto found = std::ranges::find_if(roles(), [element](const Role& role) {
        return qncore::equal_nocase_ascii(role.element, element);
    });
    return found != roles().end() ? &*found : nullptr;
}

const std::string* find_section(std::string_view name) {
    for (const auto* section : vdcertificates::ConfigurationFileAccess::sections) {
        if (section->name == name) {
            return &section->name;
        }
    }
    return nullptr;
}

std::string role_names() {
    std::string names;
    for (const Role& role : roles()) {
        names += names.empty() ? "" : ", ";
        names += role.name;
    }
    return names;
}

} // namespace tool
