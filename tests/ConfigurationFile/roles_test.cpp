#include <functional>

#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

using vdcertificates::CertificateNode;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileNodes;

using S = const std::string&;
using C = ConfigurationFile;
using Node = CertificateNode;

/// The pair of accessors of one role, made alike: server, then an entry's fields.
struct Role {
    std::string member;
    const char* element;
    const char* section;
    const char* parameters; ///< how the names of its parameters begin
    bool by_server;
    bool trusted;
    std::function<bool(C&, S, const Node&)> set;
    std::function<bool(C&, S, Node&)> get;

    /// The arguments "SRV", "1", "2", "3" and "4&" as the trace shows them.
    std::string traced() const {
        const std::string head = std::string("r") + parameters + "Certificate";
        return (by_server ? "rServerName: SRV, " : "") + head + "PublicKeyFilePath: 1, " + head +
               "PrivateKeyFilePath: 2, " + head + "FilePath: 3" +
               (trusted ? ", rTrustedCertificateFilePath: 4&" : "");
    }
};

/// Calls with the fields, and with the server and the trusted path where the accessor takes them.
template <class Accessor, class NodeType>
bool call(const Accessor& accessor, C& file, S server, NodeType& n) {
    if constexpr (requires { accessor(file, "", n.name, n.name, n.name, n.name, n.name); }) {
        return accessor(file, server, n.publicKeyPath, n.privateKeyPath, n.certificatePath,
                        n.password, n.trustedCertificatePath);
    } else if constexpr (requires { accessor(file, "", n.name, n.name, n.name, n.name); }) {
        return accessor(file, server, n.publicKeyPath, n.privateKeyPath, n.certificatePath,
                        n.password);
    } else {
        return accessor(file, n.publicKeyPath, n.privateKeyPath, n.certificatePath, n.password);
    }
}

template <class Setter, class Getter>
Role make_role(const char* member, const char* element, const char* section, const char* parameters,
               bool by_server, bool trusted, const Setter& setter, const Getter& getter) {
    return {member,
            element,
            section,
            parameters,
            by_server,
            trusted,
            [=](C& file, S server, const Node& n) { return call(setter, file, server, n); },
            [=](C& file, S server, Node& n) { return call(getter, file, server, n); }};
}

/// A call of an accessor that is one only with arguments that it takes; a lambda, since overloads
/// have no address without a type.
#define ACCESSOR(name)                                                                             \
    [](C& file, auto&... arguments) -> decltype(file.name(arguments...)) {                         \
        return file.name(arguments...);                                                            \
    }
#define ROLE(member, element, section, parameters, by_server, trusted)                             \
    make_role(#member, element, section, parameters, by_server, trusted,                           \
              ACCESSOR(set_##member##_certificate_information),                                    \
              ACCESSOR(get_##member##_certificate_information))

std::vector<Role> all_roles() {
    return {
        ROLE(cluster, "ServerGroupCertificate", "Notifiers", "Cluster", false, false),
        ROLE(subsystems, "VDCertificateAuthority", "Notifiers", "Subsystems", true, false),
        ROLE(subsystems_server, "SubsystemsServerCertificate", "Notifiers", "SubsystemsServer",
             true, true),
        ROLE(subsystems_remote_client, "SubsystemsRemoteClientCertificate", "Notifiers",
             "SubsystemsRemoteClient", true, true),
        ROLE(remote_client, "RemoteClientCertificate", "Notifiers", "RemoteClient", true, true),
        ROLE(webconfig, "WebConfigCertificate", "Notifiers", "WebConfig", true, false),
        ROLE(devices, "SIPDevice", "SIPDevices", "Devices", true, true),
        ROLE(media_retrieval_server, "Server", "MediaRetrieval", "MediaRetrievalServer", true,
             true),
        ROLE(media_retrieval_client, "Client", "MediaRetrieval", "MediaRetrievalClient", true,
             true),
    };
}

class RolesTest : public StoreTest {
  protected:
    RolesTest() {
        const bool left_alone = file.set_additional_certificate_information({});
        EXPECT_TRUE(left_alone);
    }

    ConfigurationFile file;
    const std::vector<Role> roles = all_roles();
    const std::string secret = "pass&word";
};

TEST_F(RolesTest, EachRoleKeepsItsOwnEntryInItsPlace) {
    for (const Role& role : roles) {
        const auto set = entry("", "1", "2", "3", secret, role.trusted ? "4&" : "");
        EXPECT_TRUE(role.set(file, "SRV", set)) << role.member;
        std::string text = configuration();
        const std::size_t section = text.find(std::string("<") + role.section + ">");
        const std::size_t place = text.find(std::string("<") + role.element + "><PublicKeyPath>1<");
        EXPECT_LT(section, place) << role.member;
        EXPECT_LT(place, text.find(std::string("</") + role.section + ">")) << role.member;
        EXPECT_EQ(text.substr(0, place).ends_with("<Notifier Name=\"SRV\">") ||
                      text.substr(0, place).ends_with("Certificate>") ||
                      text.substr(0, place).ends_with("Authority>") ||
                      text.substr(0, place).ends_with("</Server>"),
                  role.by_server)
            << role.member;
    }
    for (const Role& role : roles) {
        CertificateNode got;
        EXPECT_TRUE(role.get(file, "srv", got)) << role.member;
        EXPECT_EQ(show(got), show(entry("", "1", "2", "3", secret, role.trusted ? "4&" : "")))
            << role.member;
        EXPECT_TRUE(role.set(file, "SRV", entry(""))); // empty fields clear
        EXPECT_TRUE(role.get(file, "SRV", got));
        EXPECT_EQ(show(got), show(entry(""))) << role.member;
    }
}

TEST_F(RolesTest, AMissingEntryLeavesTheOutputsAndAMissingFileFails) {
    ASSERT_TRUE(file.set_webconfig_certificate_information("OTHER", "x", "x", "x", ""));
    for (const bool present : {true, false}) {
        for (const Role& role : roles) {
            CertificateNode got = entry("", "a", "b", "c", "d", "e");
            const std::string before = show(got);
            EXPECT_EQ(role.get(file, "SRV", got), present) << role.member;
            EXPECT_EQ(show(got), before) << role.member;
        }
        std::filesystem::remove(machine.default_file());
    }
}

TEST_F(RolesTest, OnlyTheFirstSpellingOfAServerIsLookedAt) {
    write_configuration(document("<Notifier Name=\"SRV\"><WebConfigCertificate/></Notifier>"
                                 "<Notifier Name=\"srv\"><VDCertificateAuthority><PublicKeyPath>p"
                                 "</PublicKeyPath></VDCertificateAuthority></Notifier>"));
    CertificateNode got = entry("", "untouched");
    EXPECT_TRUE(roles[1].get(file, "srv", got));
    EXPECT_EQ(got.publicKeyPath, "untouched");
}

TEST_F(RolesTest, AdditionalEntriesGoThroughAsTheyAre) {
    ConfigurationFileNodes nodes;
    nodes.certificates = {entry("Custom", "p", "k", "c", secret, "t&")};
    nodes.notifiers["SRV"] = {entry("Other", "p2")};
    EXPECT_TRUE(file.set_additional_certificate_information(nodes));
    ConfigurationFileNodes got;
    got.certificates = {entry("old")};
    EXPECT_TRUE(file.get_additional_certificate_information(got));
    EXPECT_EQ(show(got), show(nodes));

    const std::string before = configuration();
    EXPECT_TRUE(file.set_additional_certificate_information({}));
    EXPECT_EQ(configuration(), before); // this padding gives one cipher text for one password
}

TEST_F(RolesTest, TracesNameTheArgumentsAndNeverThePassword) {
    for (const Role& role : roles) {
        const support::TraceCapture capture("81");
        const std::string name = "vdcertificates::ConfigurationFile::";
        const std::string member = role.member + "_certificate_information()";
        EXPECT_TRUE(role.set(file, "SRV", entry("", "1", "2", "3", secret, "4&")));
        CertificateNode got;
        EXPECT_TRUE(role.get(file, "SRV", got));
        EXPECT_EQ(got.password, secret);
        const std::string topic = " VDCertificatesConfigurationFile " + name;
        for (const char* direction : {"set_", "get_"}) {
            const std::string text = capture.text();
            const std::string head = topic + direction + member + " ";
            const std::size_t entry_at = text.find(" 81" + head + "entry\n");
            const std::size_t arguments = text.find(" 41" + head + role.traced() + "\n");
            const std::size_t exit_at = text.find(" 81" + head + "exit\n");
            EXPECT_NE(arguments, std::string::npos) << role.traced() << '\n' << text;
            EXPECT_LT(entry_at, arguments);
            EXPECT_LT(arguments, exit_at);
            EXPECT_NE(exit_at, std::string::npos);
        }
        EXPECT_THAT(capture.text(), testing::Not(testing::HasSubstr(secret)));
    }
}

TEST_F(RolesTest, APasswordTooLongChangesNothing) {
    ASSERT_TRUE(file.set_cluster_certificate_information("1", "2", "3", secret));
    const std::string before = configuration();
    const support::TraceCapture capture("System=11");
    EXPECT_FALSE(file.set_cluster_certificate_information("1", "2", "3", std::string(246, 'x')));
    EXPECT_EQ(configuration(), before);
    EXPECT_THAT(capture.text(), testing::HasSubstr("Plaintext data size too big for RSA key and "
                                                   "padding.  DataSize: 246, MaxDataSize: "
                                                   "{@maxData})"));
    EXPECT_TRUE(file.set_cluster_certificate_information("1", "2", "3", std::string(245, 'x')));
}

} // namespace
} // namespace store_test
