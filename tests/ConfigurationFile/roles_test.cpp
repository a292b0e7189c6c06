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
    bool trusted;
    std::function<bool(C&, S, const Node&)> set;
    std::function<bool(C&, S, Node&)> get;
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

/// A call of an accessor that is one only with arguments that it takes; a lambda, since overloads
/// have no address without a type.
#define ACCESSOR(name)                                                                             \
    [](C& object, auto&... arguments) -> decltype(object.name(arguments...)) {                     \
        return object.name(arguments...);                                                          \
    }
#define ROLE(member, trusted)                                                                      \
    Role {                                                                                         \
#member, trusted,                                                                          \
            [](C& store, S server, const Node& n) {                                                \
                return call(ACCESSOR(set_##member##_certificate_information), store, server, n);   \
            },                                                                                     \
            [](C& store, S server, Node& n) {                                                      \
                return call(ACCESSOR(get_##member##_certificate_information), store, server, n);   \
            }       \
    }

class RolesTest : public StoreTest {
  protected:
    ConfigurationFile file;
    const std::vector<Role> roles = {
        ROLE(cluster, false),
        ROLE(subsystems, false),
        ROLE(subsystems_server, true),
        ROLE(subsystems_remote_client, true),
        ROLE(remote_client, true),
        ROLE(webconfig, false),
        ROLE(devices, true),
        ROLE(media_retrieval_server, true),
        ROLE(media_retrieval_client, true),
    };
    const std::string secret = "pass&word";
};

// Required byte for byte: other programs of the suite compare and parse this text.
const std::string golden =
    R"(<ORVACertificates><Notifiers><ServerGroupCertificate><PublicKeyPath>cluster.pub</PublicKeyPath><PrivateKeyPath>cluster.key</PrivateKeyPath><CertificatePath>cluster.crt</CertificatePath><Password></Password><TrustedCertificatePath></TrustedCertificatePath></ServerGroupCertificate><Notifier Name="SRV"><VDCertificateAuthority><PublicKeyPath>subsystems.pub</PublicKeyPath><PrivateKeyPath>subsystems.key</PrivateKeyPath><CertificatePath>subsystems.crt</CertificatePath><Password></Password><TrustedCertificatePath></TrustedCertificatePath></VDCertificateAuthority><SubsystemsServerCertificate><PublicKeyPath>subsystems_server.pub</PublicKeyPath><PrivateKeyPath>subsystems_server.key</PrivateKeyPath><CertificatePath>subsystems_server.crt</CertificatePath><Password></Password><TrustedCertificatePath>a&amp;b.crt</TrustedCertificatePath></SubsystemsServerCertificate><SubsystemsRemoteClientCertificate><PublicKeyPath>subsystems_remote_client.pub</PublicKeyPath><PrivateKeyPath>subsystems_remote_client.key</PrivateKeyPath><CertificatePath>subsystems_remote_client.crt</CertificatePath><Password></Password><TrustedCertificatePath>a&amp;b.crt</TrustedCertificatePath></SubsystemsRemoteClientCertificate><RemoteClientCertificate><PublicKeyPath>remote_client.pub</PublicKeyPath><PrivateKeyPath>remote_client.key</PrivateKeyPath><CertificatePath>remote_client.crt</CertificatePath><Password></Password><TrustedCertificatePath>a&amp;b.crt</TrustedCertificatePath></RemoteClientCertificate><WebConfigCertificate><PublicKeyPath>webconfig.pub</PublicKeyPath><PrivateKeyPath>webconfig.key</PrivateKeyPath><CertificatePath>webconfig.crt</CertificatePath><Password></Password><TrustedCertificatePath></TrustedCertificatePath></WebConfigCertificate></Notifier></Notifiers><SIPDevices><Notifier Name="SRV"><SIPDevice><PublicKeyPath>devices.pub</PublicKeyPath><PrivateKeyPath>devices.key</PrivateKeyPath><CertificatePath>devices.crt</CertificatePath><Password></Password><TrustedCertificatePath>a&amp;b.crt</TrustedCertificatePath></SIPDevice></Notifier></SIPDevices><MediaRetrieval><Notifier Name="SRV"><Server><PublicKeyPath>media_retrieval_server.pub</PublicKeyPath><PrivateKeyPath>media_retrieval_server.key</PrivateKeyPath><CertificatePath>media_retrieval_server.crt</CertificatePath><Password></Password><TrustedCertificatePath>a&amp;b.crt</TrustedCertificatePath></Server><Client><PublicKeyPath>media_retrieval_client.pub</PublicKeyPath><PrivateKeyPath>media_retrieval_client.key</PrivateKeyPath><CertificatePath>media_retrieval_client.crt</CertificatePath><Password></Password><TrustedCertificatePath>a&amp;b.crt</TrustedCertificatePath></Client></Notifier></MediaRetrieval></ORVACertificates>)";

TEST_F(RolesTest, AllRolesGiveExactlyThisFile) {
    EXPECT_TRUE(file.set_additional_certificate_information({}));
    EXPECT_EQ(configuration(), document(""));
    const auto entry_of = [](const Role& role, const std::string& password) {
        return entry("", role.member + ".pub", role.member + ".key", role.member + ".crt", password,
                     role.trusted ? "a&b.crt" : "");
    };
    for (const Role& role : roles) {
        EXPECT_TRUE(role.set(file, "SRV", entry_of(role, secret))) << role.member;
    }
    for (const Role& role : roles) {
        CertificateNode got;
        EXPECT_TRUE(role.get(file, "srv", got)) << role.member;
        EXPECT_EQ(show(got), show(entry_of(role, secret)));
        EXPECT_TRUE(role.set(file, "sRv", entry_of(role, ""))); // clears the password
    }
    EXPECT_EQ(configuration(), golden);
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
    EXPECT_THAT(configuration(), testing::Not(testing::HasSubstr(secret)));
    EXPECT_THAT(configuration(),
                testing::HasSubstr("<Password>-----BEGIN ENCIPHERED PASSWORD-----\n"));
}

TEST_F(RolesTest, TracesNameTheArgumentsAndNeverThePassword) {
    for (const Role& role : roles) {
        const support::TraceCapture capture("81");
        EXPECT_TRUE(role.set(file, "SRV", entry("", "1", "2", "3", secret, "4&")));
        CertificateNode got;
        EXPECT_TRUE(role.get(file, "SRV", got));
        const std::string text = capture.text();
        EXPECT_THAT(text, testing::Not(testing::HasSubstr(secret)));
        for (const char* direction : {"set_", "get_"}) {
            const std::string head = " VDCertificatesConfigurationFile vdcertificates::"
                                     "ConfigurationFile::" +
                                     (direction + role.member) + "_certificate_information() ";
            const std::size_t entry_at = text.find(" 81" + head + "entry\n");
            const std::size_t arguments =
                text.find(" 41" + head + (role.member == "cluster" ? "r" : "rServerName: SRV, r"));
            EXPECT_LT(entry_at, arguments) << head;
            EXPECT_LT(arguments, text.find(" 81" + head + "exit\n")) << head;
            EXPECT_NE(text.find(role.trusted ? "FilePath: 3, rTrustedCertificateFilePath: 4&\n"
                                             : "FilePath: 3\n",
                                arguments),
                      std::string::npos)
                << head;
        }
        EXPECT_EQ(role.member == "devices",
                  text.find(" rServerName: SRV, rDevicesCertificatePublicKeyFilePath: 1, "
                            "rDevicesCertificatePrivateKeyFilePath: 2, "
                            "rDevicesCertificateFilePath: 3, rTrustedCertificateFilePath: 4&\n") !=
                      std::string::npos);
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
