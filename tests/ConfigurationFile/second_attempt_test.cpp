#include <cerrno>

#include "ConfigurationFile/machine_name.h"
#include "platform/testing/testing.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

using vdcertificates::ConfigurationFile;

class SecondAttemptTest : public StoreTest {
  protected:
    SecondAttemptTest() {
        for (const char* server : {"srv01", "192", "empty.example.test"}) {
            const std::string path = server == std::string("empty.example.test") ? "" : "path";
            EXPECT_TRUE(file.set_subsystems_remote_client_certificate_information(
                server, std::string("of ") + server, "", path, "", ""));
        }
        EXPECT_TRUE(file.set_subsystems_remote_client_certificate_information("empty", "second", "",
                                                                              "path", "", ""));
    }

    ConfigurationFile file;
};

TEST_F(SecondAttemptTest, GoesByTheOutputsAndTheShortName) {
    struct Case {
        const char* server;
        const char* certificate_before;
        const char* public_key; ///< what is found
        const char* trace;      ///< what the attempt is made with; null for no attempt
    };
    const Case cases[] = {
        {"SRV01", "", "of srv01", nullptr},
        {"unknown", "", "", ""},
        {"srv01.example.test", "", "of srv01", "srv01"},
        {"srv01.example.test", "filled", "", nullptr},
        // No name is known for a documentation address, so its first octet is looked for.
        {"192.0.2.7", "", "of 192", "192"},
        {"unknown.example.test", "", "", "unknown"},
        {".x", "", "", ""},
        {"not:an:address.x", "", "", "not:an:address"},
        // The first search found an entry with empty paths, which does not stop the attempt.
        {"empty.example.test", "", "second", "empty"},
    };
    for (const Case& test : cases) {
        const support::TraceCapture capture("41");
        std::string publicKey;
        std::string privateKey;
        std::string certificate = test.certificate_before;
        std::string password;
        std::string trusted;
        EXPECT_TRUE(file.get_subsystems_remote_client_certificate_information(
            test.server, publicKey, privateKey, certificate, password, trusted));
        EXPECT_EQ(publicKey, test.public_key) << test.server;
        const std::string checking =
            "vdcertificates::ConfigurationFile::get_subsystems_remote_client_certificate_"
            "information() Checking with serverNameToSearchFor: ";
        const std::string text = capture.text();
        if (test.trace == nullptr) {
            EXPECT_THAT(text, testing::Not(testing::HasSubstr(checking))) << test.server;
        } else {
            EXPECT_THAT(text, testing::HasSubstr(checking + test.trace + "\n")) << test.server;
        }
    }
}

TEST_F(SecondAttemptTest, AFailedLookUpAnswersFalse) {
    const std::pair<platform::Call, const char*> cases[] = {
        {platform::Call::start_name_service, "WSAStartup() failed. WSAGetLastError="},
        {platform::Call::host_name, "getnameinfo() failed. WSAGetLastError="},
    };
    for (const auto& [call, message] : cases) {
        const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
        std::string publicKey;
        std::string other;
        platform::testing::fail_next(call, platform::SystemError::posix(EIO));
        EXPECT_FALSE(file.get_subsystems_remote_client_certificate_information(
            "192.0.2.7", publicKey, other, other, other, other));
        EXPECT_EQ(publicKey, "");
        EXPECT_THAT(capture.text(), testing::HasSubstr(message));
    }
}

TEST_F(SecondAttemptTest, AnAddressBecomesAShortName) {
    vdcertificates::auto_search_string names;
    const support::TraceCapture capture("41");
    const std::string local = names.to_host_name("::1");
    EXPECT_EQ(local.find('.'), std::string::npos);
    EXPECT_THAT(capture.text(),
                testing::HasSubstr(" 41 VDCertificatesConfigurationFile vdcertificates::"
                                   "auto_search_string::to_host_name() Converted the IP address "
                                   "::1 to " +
                                   local));
}

} // namespace
} // namespace store_test
