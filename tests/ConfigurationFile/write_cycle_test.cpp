#include "ConfigurationFile/errors.h"
#include "ConfigurationFile/password_cipher.h"
#include "platform/testing/testing.h"
#include "qncertificates/certificate_keys.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/allocations.h"
#include "tests/support/failure.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

using support::EnvironmentGuard;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileAccess;
using vdcertificates::ConfigurationFileNodes;

class WriteCycleTest : public StoreTest {
  protected:
    WriteCycleTest()
        : variable("ORVA_Certificates", machine.file("x.xml")) {
        nodes.notifiers["NEW"] = {entry("E", "p")};
    }

    std::string content() const { return support::read_file(machine.file("x.xml")); }

    EnvironmentGuard variable;
    ConfigurationFile file;
    ConfigurationFileNodes nodes;
    const std::string added = "<Notifier Name=\"NEW\">" +
                              entry_text("E", "<PublicKeyPath>p</PublicKeyPath><PrivateKeyPath>"
                                              "</PrivateKeyPath><CertificatePath></CertificatePath>"
                                              "<Password></Password><TrustedCertificatePath>"
                                              "</TrustedCertificatePath>") +
                              "</Notifier>";
};

struct Setter {
    const ConfigurationFileAccess::Section& section;
    std::string function;
    bool stops;
};

const Setter setters[] = {
    {ConfigurationFileAccess::notifiers,
     "vdcertificates::ConfigurationFile::set_subsystems_certificate_information()", true},
    {ConfigurationFileAccess::devices,
     "vdcertificates::ConfigurationFile::set_devices_certificate_information()", true},
    // Required: this one alone goes on and writes.
    {ConfigurationFileAccess::media_retrieval,
     "vdcertificates::ConfigurationFile::set_media_retrieval_certificate_information()", false},
};

TEST_F(WriteCycleTest, ASharingViolationStopsAllSettersButOne) {
    for (const Setter& setter : setters) {
        const std::string before = document("<A/>", "<B/>", "<C/>");
        support::write_file(machine.file("x.xml"), before);
        const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
        platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 3);
        const auto error = support::error_of([&] { (file.*setter.section.write)(nodes); });
        EXPECT_EQ(error && error->code() == vdcertificates::error::sharing_violation, setter.stops)
            << setter.function;
        const std::string message =
            setter.function +
            " NOT performing operation due to SHARING VIOLATION: File: " + machine.file("x.xml") +
            " has already been opened with EXCLUSIVE access!";
        if (setter.stops) {
            EXPECT_EQ(content(), before) << setter.function;
            EXPECT_THAT(capture.text(), testing::HasSubstr(message));
        } else {
            // Nothing could be read, so what the file held is gone.
            EXPECT_EQ(content(), document("", "", added));
            EXPECT_THAT(capture.text(), testing::Not(testing::HasSubstr("NOT performing")));
        }
    }
}

TEST_F(WriteCycleTest, WhatCouldBeReadBeforeAFaultIsKept) {
    struct Case {
        const char* what;
        std::string before;
        std::string after;
    };
    const std::string a = entry_text("A");
    const std::string b = entry_text("B");
    const std::string junk = "<J><Password>junk</Password></J>";
    const Case cases[] = {
        {"empty file", "", document("", added)},
        {"another document", "<x/>", document("", added)},
        {"no document", "junk", document("", added)},
        {"fault in the first section", document("<A/><J></K>", "<B/>", "<C/>"), document(a, added)},
        {"fault after all sections", document("<A/>", "<B/>", "<C/>").substr(0, 80),
         document(a, added)},
        {"undecipherable in the first section", document("<A/>" + junk + "<C/>", "<B/>"),
         document(a, added)},
        {"undecipherable in the second section", document("<A/>", "<B/>" + junk, "<C/>"),
         document(a, b + added)},
        {"undecipherable as the first entry of a server",
         document("<A/><Notifier Name=\"S\">" + junk + "</Notifier>"), document(a, added)},
    };
    for (const Case& test : cases) {
        support::write_file(machine.file("x.xml"), test.before);
        EXPECT_NO_THROW((file.*ConfigurationFileAccess::devices.write)(nodes)) << test.what;
        EXPECT_EQ(content(), test.after) << test.what;
    }
}

TEST_F(WriteCycleTest, SectionsThatAreNotChangedStayAsTheyWereRead) {
    const std::string doubles = entry_text("A") + entry_text("a");
    const std::string spellings = "<Notifier Name=\"SRV\">" + doubles + "</Notifier>" +
                                  "<Notifier Name=\"srv\">" + entry_text("B") + "</Notifier>";
    support::write_file(machine.file("x.xml"), document(spellings, "", doubles));
    (file.*ConfigurationFileAccess::devices.write)(nodes);
    EXPECT_EQ(content(), document(spellings, added, doubles));
    ConfigurationFileNodes first = nodes;
    first.certificates = {entry("A"), entry("a")};
    ConfigurationFileAccess::replace(file, first, {}, nodes);
    EXPECT_EQ(content(), document(doubles + added, "", added));
}

TEST_F(WriteCycleTest, ARefusedOpenIsRepeatedForASecond) {
    const EnvironmentGuard in_the_root("ORVA_Certificates", std::nullopt);
    ASSERT_TRUE(file.set_cluster_certificate_information("p", "k", "c", ""));
    const std::string before = configuration();
    for (const int refusals : {1, 3}) {
        platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), refusals);
        EXPECT_TRUE(file.set_cluster_certificate_information("p", "k", "c", ""));
        EXPECT_EQ(configuration(), before);
    }
    platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 1000);
    EXPECT_THAT(support::failure_of([&] {
                    ConfigurationFileAccess::read(file, ConfigurationFileAccess::notifiers);
                }),
                testing::HasSubstr("Unable to open file"));
    platform::testing::fail_next(platform::Call::none, {});
}

// Stored texts that were read are kept, but for those in a form that is not the writer's.
TEST_F(WriteCycleTest, TheFileIsTheOneThatEncipheringEachPasswordGives) {
    nodes.certificates = {entry("A", "", "", "", "one password"), entry("B", "", "", "", "two")};
    nodes.notifiers["NEW"][0].password = "one password";
    ConfigurationFileAccess::replace(file, nodes, {}, nodes);
    std::string before = content();
    const std::string tail = "-----END ENCIPHERED PASSWORD-----\n";
    before.replace(before.find(tail), tail.size(), tail + "\n");
    before.insert(before.rfind("-----BEGIN"), "a word before it\n");
    support::write_file(machine.file("x.xml"), before);
    ConfigurationFileNodes changed;
    changed.certificates = {entry("B", "", "", "", "three")};
    (file.*ConfigurationFileAccess::notifiers.write)(changed);
    const std::string after = content();
    ConfigurationFileAccess::replace(
        file, ConfigurationFileAccess::read(file, ConfigurationFileAccess::notifiers), {}, nodes);
    EXPECT_EQ(content(), after);
    EXPECT_NE(after.size(), before.size());
}

TEST_F(WriteCycleTest, TheCipherWipesClearPasswords) {
    const qncertificates::CertificateKeys keys(machine.public_key_file(),
                                               machine.private_key_file(),
                                               qncertificates::eFormatPkcs1Der, false);
    const std::string password = "a password of some length";
    const auto use = [&] {
        vdcertificates::PasswordCipher cipher(keys, vdcertificates::PasswordCipher::Memory::texts);
        std::string text = cipher.encipher(password);
        const std::string stored = text;
        std::string clear = cipher.decipher(text);
        EXPECT_EQ(text, std::string(stored.size(), '\0'));
        EXPECT_EQ(clear, password);
        EXPECT_EQ(cipher.encipher(clear), stored);
        qncrypto::cleanse(clear);
    };
    EXPECT_EQ(support::blocks_given_back_with(password.data(), password.size(), use), 0);
}

TEST_F(WriteCycleTest, AFailedWriteIsReportedByTheAccessor) {
    platform::testing::fail_next(platform::Call::write, platform::SystemError());
    EXPECT_FALSE(file.set_additional_certificate_information(nodes)); // a short write
    EXPECT_FALSE(content().empty());
    EXPECT_TRUE(file.set_additional_certificate_information(nodes));
    EXPECT_EQ(content(), document(added));
}

} // namespace
} // namespace store_test
