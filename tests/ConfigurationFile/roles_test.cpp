#include <functional>

#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/trace_capture.h"

// The accessors give `const bool`, and overloads are named by their whole type here.
#ifdef __GNUC__
#pragma GCC diagnostic ignored "-Wignored-qualifiers"
#endif

namespace store_test {
namespace {

using vdcertificates::CertificateNode;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileNodes;

/// The pair of accessors of one role, made alike: server, then an entry's fields.
struct Role {
    const char* member;
    const char* element;
    const char* section;
    bool by_server;
    bool trusted;
    std::function<bool(ConfigurationFile&, const std::string&, const CertificateNode&)> set;
    std::function<bool(ConfigurationFile&, const std::string&, CertificateNode&)> get;
    const char* trace;
};

using S = const std::string&;
using C = ConfigurationFile;
using Node = CertificateNode;

template <auto Setter, auto Getter>
Role by_server(const char* member, const char* element, const char* section, const char* trace) {
    return {member,
            element,
            section,
            true,
            false,
            [](C& file, S server, const Node& n) {
                return (file.*Setter)(server, n.publicKeyPath, n.privateKeyPath, n.certificatePath,
                                      n.password);
            },
            [](C& file, S server, Node& n) {
                return (file.*Getter)(server, n.publicKeyPath, n.privateKeyPath, n.certificatePath,
                                      n.password);
            },
            trace};
}

template <auto Setter, auto Getter>
Role with_trusted(const char* member, const char* element, const char* section, const char* trace) {
    return {member,
            element,
            section,
            true,
            true,
            [](C& file, S server, const Node& n) {
                return (file.*Setter)(server, n.publicKeyPath, n.privateKeyPath, n.certificatePath,
                                      n.password, n.trustedCertificatePath);
            },
            [](C& file, S server, Node& n) {
                return (file.*Getter)(server, n.publicKeyPath, n.privateKeyPath, n.certificatePath,
                                      n.password, n.trustedCertificatePath);
            },
            trace};
}

std::vector<Role> all_roles() {
    return {
        {"cluster", "ServerGroupCertificate", "Notifiers", false, false,
         [](C& file, S, const Node& n) {
             return file.set_cluster_certificate_information(n.publicKeyPath, n.privateKeyPath,
                                                             n.certificatePath, n.password);
         },
         [](C& file, S, Node& n) {
             return file.get_cluster_certificate_information(n.publicKeyPath, n.privateKeyPath,
                                                             n.certificatePath, n.password);
         },
         "rClusterCertificatePublicKeyFilePath: 1, rClusterCertificatePrivateKeyFilePath: 2, "
         "rClusterCertificateFilePath: 3"},
        by_server<static_cast<const bool (C::*)(S, S, S, S, S)>(
                      &C::set_subsystems_certificate_information),
                  static_cast<const bool (C::*)(S, std::string&, std::string&, std::string&,
                                                std::string&)>(
                      &C::get_subsystems_certificate_information)>(
            "subsystems", "VDCertificateAuthority", "Notifiers",
            "rServerName: SRV, rSubsystemsCertificatePublicKeyFilePath: 1, "
            "rSubsystemsCertificatePrivateKeyFilePath: 2, rSubsystemsCertificateFilePath: 3"),
        with_trusted<&C::set_subsystems_server_certificate_information,
                     &C::get_subsystems_server_certificate_information>(
            "subsystems_server", "SubsystemsServerCertificate", "Notifiers",
            "rServerName: SRV, rSubsystemsServerCertificatePublicKeyFilePath: 1, "
            "rSubsystemsServerCertificatePrivateKeyFilePath: 2, "
            "rSubsystemsServerCertificateFilePath: 3, rTrustedCertificateFilePath: 4&"),
        with_trusted<&C::set_subsystems_remote_client_certificate_information,
                     &C::get_subsystems_remote_client_certificate_information>(
            "subsystems_remote_client", "SubsystemsRemoteClientCertificate", "Notifiers",
            "rServerName: SRV, rSubsystemsRemoteClientCertificatePublicKeyFilePath: 1, "
            "rSubsystemsRemoteClientCertificatePrivateKeyFilePath: 2, "
            "rSubsystemsRemoteClientCertificateFilePath: 3, rTrustedCertificateFilePath: 4&"),
        with_trusted<&C::set_remote_client_certificate_information,
                     &C::get_remote_client_certificate_information>(
            "remote_client", "RemoteClientCertificate", "Notifiers",
            "rServerName: SRV, rRemoteClientCertificatePublicKeyFilePath: 1, "
            "rRemoteClientCertificatePrivateKeyFilePath: 2, "
            "rRemoteClientCertificateFilePath: 3, rTrustedCertificateFilePath: 4&"),
        by_server<&C::set_webconfig_certificate_information,
                  &C::get_webconfig_certificate_information>(
            "webconfig", "WebConfigCertificate", "Notifiers",
            "rServerName: SRV, rWebConfigCertificatePublicKeyFilePath: 1, "
            "rWebConfigCertificatePrivateKeyFilePath: 2, rWebConfigCertificateFilePath: 3"),
        with_trusted<static_cast<const bool (C::*)(S, S, S, S, S, S)>(
                         &C::set_devices_certificate_information),
                     static_cast<const bool (C::*)(S, std::string&, std::string&, std::string&,
                                                   std::string&, std::string&)>(
                         &C::get_devices_certificate_information)>(
            "devices", "SIPDevice", "SIPDevices",
            "rServerName: SRV, rDevicesCertificatePublicKeyFilePath: 1, "
            "rDevicesCertificatePrivateKeyFilePath: 2, rDevicesCertificateFilePath: 3, "
            "rTrustedCertificateFilePath: 4&"),
        with_trusted<&C::set_media_retrieval_server_certificate_information,
                     &C::get_media_retrieval_server_certificate_information>(
            "media_retrieval_server", "Server", "MediaRetrieval",
            "rServerName: SRV, rMediaRetrievalServerCertificatePublicKeyFilePath: 1, "
            "rMediaRetrievalServerCertificatePrivateKeyFilePath: 2, "
            "rMediaRetrievalServerCertificateFilePath: 3, rTrustedCertificateFilePath: 4&"),
        with_trusted<&C::set_media_retrieval_client_certificate_information,
                     &C::get_media_retrieval_client_certificate_information>(
            "media_retrieval_client", "Client", "MediaRetrieval",
            "rServerName: SRV, rMediaRetrievalClientCertificatePublicKeyFilePath: 1, "
            "rMediaRetrievalClientCertificatePrivateKeyFilePath: 2, "
            "rMediaRetrievalClientCertificateFilePath: 3, rTrustedCertificateFilePath: 4&"),
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
    }
}

TEST_F(RolesTest, AMissingEntryLeavesTheOutputsAndAMissingFileFails) {
    ASSERT_TRUE(file.set_webconfig_certificate_information("OTHER", "x", "x", "x", ""));
    for (const Role& role : roles) {
        CertificateNode got = entry("", "a", "b", "c", "d", "e");
        const std::string before = show(got);
        EXPECT_TRUE(role.get(file, "SRV", got)) << role.member;
        EXPECT_EQ(show(got), before) << role.member;
        EXPECT_TRUE(role.get(file, "OTHER", got)) << role.member;
    }
    std::filesystem::remove(machine.default_file());
    for (const Role& role : roles) {
        CertificateNode got = entry("", "a", "b", "c", "d", "e");
        const std::string before = show(got);
        EXPECT_FALSE(role.get(file, "SRV", got)) << role.member;
        EXPECT_EQ(show(got), before) << role.member;
    }
}

TEST_F(RolesTest, EmptyFieldsClear) {
    for (const Role& role : roles) {
        EXPECT_TRUE(role.set(file, "SRV", entry("", "1", "2", "3", secret, "4")));
        EXPECT_TRUE(role.set(file, "SRV", entry("", "", "", "", "", "")));
        CertificateNode got = entry("", "a", "b", "c", "d", role.trusted ? "e" : "");
        EXPECT_TRUE(role.get(file, "SRV", got));
        EXPECT_EQ(show(got), show(entry(""))) << role.member;
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

TEST_F(RolesTest, ASetAfterASetKeepsWhatWasThere) {
    for (int i = 0; i < 5; ++i) {
        ASSERT_TRUE(file.set_devices_certificate_information("S" + std::to_string(i), "1", "2", "3",
                                                             secret + std::to_string(i), "4"));
        ASSERT_TRUE(file.set_cluster_certificate_information("1", "2", "3", secret));
    }
    for (int i = 0; i < 5; ++i) {
        CertificateNode got;
        EXPECT_TRUE(roles[6].get(file, "S" + std::to_string(i), got));
        EXPECT_EQ(got.password, secret + std::to_string(i));
    }
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
        const std::string member = std::string(role.member) + "_certificate_information()";
        EXPECT_TRUE(role.set(file, "SRV", entry("", "1", "2", "3", secret, "4&")));
        CertificateNode got;
        EXPECT_TRUE(role.get(file, "SRV", got));
        EXPECT_EQ(got.password, secret);
        const std::string topic = " VDCertificatesConfigurationFile " + name;
        for (const char* direction : {"set_", "get_"}) {
            const std::string text = capture.text();
            const std::string head = topic + direction + member + " ";
            const std::size_t entry_at = text.find(" 81" + head + "entry\n");
            const std::size_t arguments = text.find(" 41" + head + role.trace + "\n");
            const std::size_t exit_at = text.find(" 81" + head + "exit\n");
            EXPECT_NE(arguments, std::string::npos) << role.trace << '\n' << text;
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
