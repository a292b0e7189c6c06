#include <cerrno>

#include "ConfigurationFile/machine_name.h"
#include "platform/testing/testing.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

using support::TraceCapture;
using testing::HasSubstr;
using vdcertificates::CertificateNode;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileNodes;

using S = const std::string&;
using C = ConfigurationFile;
using Node = CertificateNode;

/// The accessors of one role, as functions of a server and an entry.
struct Role {
    std::string member;
    bool trusted;
    bool (*set)(C&, S, Node&);
    bool (*get)(C&, S, Node&);
};

/// Calls an accessor with the fields, and with the server and the trusted path if it takes them.
template <class Accessor>
bool call(const Accessor& accessor, S server, Node& n) {
    if constexpr (requires { accessor(server, n.name, n.name, n.name, n.name, n.name); }) {
        return accessor(server, n.publicKeyPath, n.privateKeyPath, n.certificatePath, n.password,
                        n.trustedCertificatePath);
    } else if constexpr (requires { accessor(server, n.name, n.name, n.name, n.name); }) {
        return accessor(server, n.publicKeyPath, n.privateKeyPath, n.certificatePath, n.password);
    } else {
        return accessor(n.publicKeyPath, n.privateKeyPath, n.certificatePath, n.password);
    }
}

#define ACCESSOR(name)                                                                             \
    [](C& store, S server, Node& node) {                                                           \
        const auto accessor = [&store](auto&... all) -> decltype(store.name(all...)) {             \
            return store.name(all...);                                                             \
        };                                                                                         \
        return call(accessor, server, node);                                                       \
    }
#define ROLE(member, trusted)                                                                      \
    Role {                                                                                         \
#member, trusted, ACCESSOR(set_##member##_certificate_information),                        \
            ACCESSOR(get_##member##_certificate_information)                                       \
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
        CertificateNode node = entry_of(role, secret);
        EXPECT_TRUE(role.set(file, "SRV", node)) << role.member;
    }
    for (const Role& role : roles) {
        CertificateNode got;
        EXPECT_TRUE(role.get(file, "srv", got)) << role.member;
        EXPECT_EQ(show(got), show(entry_of(role, secret)));
        got.password.clear();
        EXPECT_TRUE(role.set(file, "sRv", got));
    }
    EXPECT_EQ(configuration(), golden);
}

TEST_F(RolesTest, AMissingEntryLeavesTheOutputsAndAMissingFileFails) {
    // Only the first spelling of a server counts.
    write_configuration(document("<Notifier Name=\"SRV\"><Other/></Notifier>"
                                 "<Notifier Name=\"srv\"><VDCertificateAuthority/></Notifier>"));
    for (const bool present : {true, false}) {
        for (const Role& role : roles) {
            CertificateNode got = entry("", "a", "b", "c", "d", "e");
            EXPECT_EQ(role.get(file, "srv", got), present) << role.member;
            EXPECT_EQ(show(got), "(a,b,c,d,e)") << role.member;
        }
        support::remove_all(machine.default_file());
    }
    write_configuration(document("<ServerGroupCertificate/><servergroupcertificate><PublicKeyPath>"
                                 "second</PublicKeyPath></servergroupcertificate>"));
    CertificateNode first;
    EXPECT_TRUE(roles[0].get(file, "", first));
    EXPECT_EQ(first.publicKeyPath, "");
}

TEST_F(RolesTest, AdditionalEntriesPassUnchangedAndAPasswordIsEnciphered) {
    ConfigurationFileNodes nodes;
    nodes.certificates = {entry("Custom", "p", "k", "c", std::string(245, 'x'), "t&")};
    nodes.notifiers["SRV"] = {entry("Other", "p2")};
    EXPECT_TRUE(file.set_additional_certificate_information(nodes));
    ConfigurationFileNodes got;
    got.certificates = {entry("old")};
    EXPECT_TRUE(file.get_additional_certificate_information(got));
    EXPECT_EQ(show(got), show(nodes));
    const std::string before = configuration();
    EXPECT_THAT(before, testing::Not(HasSubstr("xxx")));
    EXPECT_THAT(before, HasSubstr("<Password>-----BEGIN ENCIPHERED PASSWORD-----\n"));

    const TraceCapture capture("System=11");
    EXPECT_FALSE(file.set_cluster_certificate_information("1", "2", "3", std::string(246, 'x')));
    EXPECT_EQ(configuration(), before);
    // Required: the parameter keeps its braces.
    EXPECT_THAT(capture.text(), HasSubstr("DataSize: 246, MaxDataSize: {@maxData})"));
}

TEST_F(RolesTest, TracesNameTheArgumentsAndNeverThePassword) {
    for (const Role& role : roles) {
        const TraceCapture capture("81");
        CertificateNode got = entry("", "1", "2", "3", secret, "4&");
        EXPECT_TRUE(role.set(file, "SRV", got));
        EXPECT_TRUE(role.get(file, "SRV", got));
        const std::string text = capture.text();
        EXPECT_THAT(text, testing::Not(HasSubstr(secret)));
        for (const char* direction : {"set_", "get_"}) {
            const std::string head = " VDCertificatesConfigurationFile vdcertificates::"
                                     "ConfigurationFile::" +
                                     (direction + role.member) + "_certificate_information() ";
            const std::size_t arguments =
                text.find(" 41" + head + (role.member == "cluster" ? "r" : "rServerName: SRV, r"));
            EXPECT_LT(text.find(" 81" + head + "entry\n"), arguments) << head;
            EXPECT_LT(
                arguments,
                text.find("FilePath: 3" + std::string(role.trusted ? ", rTrustedCertificateFile"
                                                                     "Path: 4&\n"
                                                                   : "\n"),
                          arguments))
                << head;
        }
    }
}

class SecondAttemptTest : public StoreTest {
  protected:
    bool set(const std::string& server, const std::string& publicKey, const std::string& path) {
        return file.set_subsystems_remote_client_certificate_information(server, publicKey, "",
                                                                         path, "", "");
    }
    /// The public key that is found for a server; "false" if the answer is false.
    std::string get(const std::string& server, std::string certificate = "") {
        std::string publicKey;
        std::string other;
        const bool got = file.get_subsystems_remote_client_certificate_information(
            server, publicKey, other, certificate, other, other);
        return got ? publicKey : publicKey + "false";
    }

    ConfigurationFile file;
};

TEST_F(SecondAttemptTest, IsMadeWithTheShortNameIfTheOutputsAreEmpty) {
    EXPECT_TRUE(set("srv01", "of srv01", "path") && set("192", "of 192", "path") &&
                set("empty.example.test", "first", "") && set("empty", "second", "path"));
    const std::string checking = "Checking with serverNameToSearchFor: ";
    // Server, certificate before, the public key found, and the name in the second attempt.
    const std::array<const char*, 4> cases[] = {
        {"SRV01", "", "of srv01", nullptr},
        {"unknown", "", "", ""},
        {"srv01.example.test", "", "of srv01", "srv01"},
        {"srv01.example.test", "filled", "", nullptr},
        // A documentation address has no name, so its first octet is searched for.
        {"192.0.2.7", "", "of 192", "192"},
        {".x", "", "", ""},
        {"not:an:address.x", "", "", "not:an:address"},
        // An entry with empty paths does not stop the attempt.
        {"empty.example.test", "", "second", "empty"},
    };
    for (const auto& [server, certificate, found, attempt] : cases) {
        const TraceCapture capture("41");
        EXPECT_EQ(get(server, certificate), found) << server;
        if (attempt != nullptr) {
            EXPECT_THAT(capture.text(), HasSubstr(checking + attempt + "\n")) << server;
        } else {
            EXPECT_THAT(capture.text(), testing::Not(HasSubstr(checking))) << server;
        }
    }
}

TEST_F(SecondAttemptTest, AnswersFalseAfterAFailedLookUp) {
    const std::pair<platform::Call, const char*> cases[] = {
        {platform::Call::start_name_service, "WSAStartup() failed. WSAGetLastError="},
        {platform::Call::host_name, "getnameinfo() failed. WSAGetLastError="},
    };
    EXPECT_TRUE(set("192", "of 192", "path"));
    for (const auto& [call, message] : cases) {
        const TraceCapture capture("VDCertificatesConfigurationFile=11");
        platform::testing::fail_next(call, platform::SystemError::posix(EIO));
        EXPECT_EQ(get("192.0.2.7"), "false");
        EXPECT_THAT(capture.text(), HasSubstr(message));
    }
    const TraceCapture capture("41");
    const std::string local = vdcertificates::auto_search_string().to_host_name("::1");
    EXPECT_EQ(local.find('.'), std::string::npos);
    EXPECT_THAT(capture.text(), HasSubstr("Converted the IP address ::1 to " + local));
}

} // namespace
} // namespace store_test
