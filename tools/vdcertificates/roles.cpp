#include "tools/vdcertificates/roles.h"

#include <algorithm>

#include "tools/vdcertificates/text_checks.h"

namespace tool {
namespace {

using File = vdcertificates::ConfigurationFile;

/// Builds a visitor out of one lambda for each shape of accessor.
template <class... Shapes>
struct Visitor : Shapes... {
    using Shapes::operator()...;
};
template <class... Shapes>
Visitor(Shapes...) -> Visitor<Shapes...>;

} // namespace

const std::array<Role, 9>& roles() {
#define ACCESSORS(Shape, name)                                                                     \
    static_cast<Role::Set##Shape>(&File::set_##name##_certificate_information),                    \
        static_cast<Role::Get##Shape>(&File::get_##name##_certificate_information)
    // clang-format off
    static const std::array<Role, 9> all{{
        {"cluster", File::sm_clusterCertificate, File::sm_notifiersNode,
         ACCESSORS(Cluster, cluster)},
        {"subsystems", File::sm_subsystemsCertificate, File::sm_notifiersNode,
         ACCESSORS(Plain, subsystems)},
        {"subsystems-server", File::sm_subsystemsServerCertificate, File::sm_notifiersNode,
         ACCESSORS(Trusted, subsystems_server)},
        {"subsystems-remote-client", File::sm_subsystemsRemoteClientCertificate, File::sm_notifiersNode,
         ACCESSORS(Trusted, subsystems_remote_client)},
        {"remote-client", File::sm_remoteClientCertificate, File::sm_notifiersNode,
         ACCESSORS(Trusted, remote_client)},
        {"web-config", File::sm_webConfigCertificate, File::sm_notifiersNode,
         ACCESSORS(Plain, webconfig)},
        {"sip-device", File::sm_deviceCertificate, File::sm_devicesNode,
         ACCESSORS(Trusted, devices)},
        {"media-retrieval-server", File::sm_mediaRetrievalServerCertificate, File::sm_mediaRetrievalNode,
         ACCESSORS(Trusted, media_retrieval_server)},
        {"media-retrieval-client", File::sm_mediaRetrievalClientCertificate, File::sm_mediaRetrievalNode,
         ACCESSORS(Trusted, media_retrieval_client)},
    }};
    // clang-format on
#undef ACCESSORS
    return all;
}

const Role* find_role(std::string_view name) {
    const auto found = std::ranges::find(roles(), name, &Role::name);
    return found != roles().end() ? &*found : nullptr;
}

const Role* find_role_by_element(std::string_view element) {
    const auto found = std::ranges::find(roles(), folded(std::string(element)),
                                         [](const Role& role) { return folded(role.element); });
    return found != roles().end() ? &*found : nullptr;
}

std::string role_names() {
    std::string names;
    for (const Role& role : roles()) {
        names += names.empty() ? "" : ", ";
        names += role.name;
    }
    return names;
}

bool store(File& file, const Role& role, const Entry& entry) {
    const vdcertificates::CertificateNode& node = entry.node;
    const std::string& server = entry.server;
    return std::visit(Visitor{
                          [&](Role::SetCluster set) {
                              return (file.*set)(node.publicKeyPath, node.privateKeyPath,
                                                 node.certificatePath, node.password);
                          },
                          [&](Role::SetPlain set) {
                              return (file.*set)(server, node.publicKeyPath, node.privateKeyPath,
                                                 node.certificatePath, node.password);
                          },
                          [&](Role::SetTrusted set) {
                              return (file.*set)(server, node.publicKeyPath, node.privateKeyPath,
                                                 node.certificatePath, node.password,
                                                 node.trustedCertificatePath);
                          },
                      },
                      role.setter);
}

bool fetch(File& file, const Role& role, Entry& entry) {
    vdcertificates::CertificateNode& node = entry.node;
    const std::string& server = entry.server;
    return std::visit(Visitor{
                          [&](Role::GetCluster get) {
                              return (file.*get)(node.publicKeyPath, node.privateKeyPath,
                                                 node.certificatePath, node.password);
                          },
                          [&](Role::GetPlain get) {
                              return (file.*get)(server, node.publicKeyPath, node.privateKeyPath,
                                                 node.certificatePath, node.password);
                          },
                          [&](Role::GetTrusted get) {
                              return (file.*get)(server, node.publicKeyPath, node.privateKeyPath,
                                                 node.certificatePath, node.password,
                                                 node.trustedCertificatePath);
                          },
                      },
                      role.getter);
}

} // namespace tool
