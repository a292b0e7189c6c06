#include <algorithm>

#include "tests/ConfigurationFile/store_fixture.h"

namespace store_test {
namespace {

using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileAccess;
using vdcertificates::ConfigurationFileNodes;

class DocumentTest : public StoreTest {
  protected:
    ConfigurationFile file;
};

// Required byte for byte: other programs of the suite compare and parse this text.
TEST_F(DocumentTest, FourCallsGiveExactlyThisFile) {
    EXPECT_TRUE(file.set_cluster_certificate_information(
        R"(C:\Keys\cluster.pub)", R"(C:\Keys\cluster.key)", R"(C:\Keys\cluster.crt)", ""));
    EXPECT_TRUE(file.set_subsystems_server_certificate_information(
        "SRV01", R"(C:\Keys\srv01.pub)", R"(C:\Keys\srv01.key)", R"(C:\Keys\srv01.crt)", "",
        R"(C:\Keys\a&b.crt)"));
    EXPECT_TRUE(file.set_devices_certificate_information(
        "SRV01", R"(C:\Keys\srv01.pub)", R"(C:\Keys\srv01.key)", R"(C:\Keys\srv01.crt)", "", ""));
    EXPECT_TRUE(file.set_media_retrieval_client_certificate_information(
        "SRV02", R"(C:\Keys\srv01.pub)", R"(C:\Keys\srv01.key)", R"(C:\Keys\srv01.crt)", "", ""));
    std::string expected =
        R"(<ORVACertificates><Notifiers><ServerGroupCertificate><PublicKeyPath>C:\Keys\cluster.pub</PublicKeyPath><PrivateKeyPath>C:\Keys\cluster.key</PrivateKeyPath><CertificatePath>C:\Keys\cluster.crt</CertificatePath><Password></Password><TrustedCertificatePath></TrustedCertificatePath></ServerGroupCertificate><Notifier Name=*SRV01*><SubsystemsServerCertificate><PublicKeyPath>C:\Keys\srv01.pub</PublicKeyPath><PrivateKeyPath>C:\Keys\srv01.key</PrivateKeyPath><CertificatePath>C:\Keys\srv01.crt</CertificatePath><Password></Password><TrustedCertificatePath>C:\Keys\a&amp;b.crt</TrustedCertificatePath></SubsystemsServerCertificate></Notifier></Notifiers><SIPDevices><Notifier Name=*SRV01*><SIPDevice><PublicKeyPath>C:\Keys\srv01.pub</PublicKeyPath><PrivateKeyPath>C:\Keys\srv01.key</PrivateKeyPath><CertificatePath>C:\Keys\srv01.crt</CertificatePath><Password></Password><TrustedCertificatePath></TrustedCertificatePath></SIPDevice></Notifier></SIPDevices><MediaRetrieval><Notifier Name=*SRV02*><Client><PublicKeyPath>C:\Keys\srv01.pub</PublicKeyPath><PrivateKeyPath>C:\Keys\srv01.key</PrivateKeyPath><CertificatePath>C:\Keys\srv01.crt</CertificatePath><Password></Password><TrustedCertificatePath></TrustedCertificatePath></Client></Notifier></MediaRetrieval></ORVACertificates>)";
    std::replace(expected.begin(), expected.end(), '*', '"');
    EXPECT_EQ(configuration(), expected);
}

TEST_F(DocumentTest, NothingSetGivesThreeEmptySections) {
    EXPECT_TRUE(file.set_additional_certificate_information({}));
    EXPECT_EQ(configuration(), "<ORVACertificates><Notifiers></Notifiers><SIPDevices></SIPDevices>"
                               "<MediaRetrieval></MediaRetrieval></ORVACertificates>");
}

TEST_F(DocumentTest, ServersStandInByteOrderBehindTheCluster) {
    for (const char* server : {"srv02", "SRV03", "SRV01"}) {
        EXPECT_TRUE(file.set_webconfig_certificate_information(server, "", "", "", ""));
    }
    EXPECT_TRUE(file.set_cluster_certificate_information("", "", "", ""));
    const std::string web = entry_text("WebConfigCertificate");
    EXPECT_EQ(configuration(),
              document(entry_text("ServerGroupCertificate") + "<Notifier Name=\"SRV01\">" + web +
                       "</Notifier>" + "<Notifier Name=\"SRV03\">" + web + "</Notifier>" +
                       "<Notifier Name=\"srv02\">" + web + "</Notifier>"));
}

// Required: only the trusted path is escaped, and only three characters of it.
TEST_F(DocumentTest, OnlyTheTrustedPathIsEscaped) {
    ConfigurationFileNodes none;
    ConfigurationFileNodes nodes;
    nodes.notifiers["a\"b"] = {entry("E", "p&", "k\"", "a<b>&c", "", "a<b>&c\"'")};
    EXPECT_EQ(ConfigurationFileAccess::merge(file, none, nodes, "S"),
              "<S><Notifier Name=\"a\"b\"><E><PublicKeyPath>p&</PublicKeyPath>"
              "<PrivateKeyPath>k\"</PrivateKeyPath><CertificatePath>a<b>&c</CertificatePath>"
              "<Password></Password><TrustedCertificatePath>a&lt;b&gt;&amp;c\"'"
              "</TrustedCertificatePath></E></Notifier></S>");
}

TEST_F(DocumentTest, APasswordStandsEncipheredAndTheLineEndsAreItsOwn) {
    const std::string password = "s3cret&<\"\xC3\xA4";
    EXPECT_TRUE(file.set_cluster_certificate_information("p", "k", "c", password));
    const std::string text = configuration();
    EXPECT_THAT(text, testing::Not(testing::HasSubstr(password)));
    EXPECT_THAT(text, testing::HasSubstr("<Password>-----BEGIN ENCIPHERED PASSWORD-----\n"));
    std::string clear;
    std::string other;
    EXPECT_TRUE(file.get_cluster_certificate_information(other, other, other, clear));
    EXPECT_EQ(clear, password);
}

} // namespace
} // namespace store_test
