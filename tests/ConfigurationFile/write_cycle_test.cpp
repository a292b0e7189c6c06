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

using Access = vdcertificates::ConfigurationFileAccess;
using vdcertificates::ConfigurationFileNodes;

class WriteCycleTest : public StoreTest {
  protected:
    WriteCycleTest() { nodes.notifiers["NEW"] = {entry("E")}; }

    vdcertificates::ConfigurationFile file;
    ConfigurationFileNodes nodes;
    const std::string added = "<Notifier Name=\"NEW\">" + entry_text("E") + "</Notifier>";
};

TEST_F(WriteCycleTest, ASharingViolationStopsAllSettersButOne) {
    const std::tuple<const Access::Section&, const char*, bool> setters[] = {
        {Access::notifiers, "set_subsystems_certificate_information", true},
        {Access::devices, "set_devices_certificate_information", true},
        // Required: this one alone goes on and writes. Nothing was read, so what there was is gone.
        {Access::media_retrieval, "", false},
    };
    const std::string moved = machine.file("x.xml");
    const support::EnvironmentGuard variable("ORVA_Certificates", moved);
    for (const auto& [section, function, stops] : setters) {
        const std::string before = document("<A/>", "<B/>", "<C/>");
        support::write_file(moved, before);
        const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
        platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 3);
        const auto error = support::error_of([&] { (file.*section.write)(nodes); });
        EXPECT_EQ(error && error->code() == vdcertificates::error::sharing_violation, stops);
        EXPECT_EQ(support::read_file(moved), stops ? before : document("", "", added));
        EXPECT_EQ(capture.text().find(function +
                                      std::string("() NOT performing operation due to "
                                                  "SHARING VIOLATION: File: ") +
                                      moved) != std::string::npos,
                  stops);
    }
}

TEST_F(WriteCycleTest, WhatCouldBeReadBeforeAFaultIsKept) {
    const std::string a = entry_text("A");
    const std::string b = entry_text("B");
    const std::string junk = "<J><Password>junk</Password></J>";
    const std::tuple<const char*, std::string, std::string> cases[] = {
        {"no document", "junk", document("", added)},
        {"fault after all sections", document("<A/>", "<B/>", "<C/>").substr(0, 80),
         document(a, added)},
        {"undecipherable in the first section", document("<A/>" + junk + "<C/>", "<B/>"),
         document(a, added)},
        {"undecipherable in the second section", document("<A/>", "<B/>" + junk, "<C/>"),
         document(a, b + added)},
        {"undecipherable as the first entry of a server",
         document("<A/><Notifier Name=\"S\">" + junk + "</Notifier>"), document(a, added)},
    };
    for (const auto& [what, before, after] : cases) {
        write_configuration(before);
        EXPECT_NO_THROW((file.*Access::devices.write)(nodes)) << what;
        EXPECT_EQ(configuration(), after) << what;
    }
}

TEST_F(WriteCycleTest, SectionsThatAreNotChangedStayAsTheyWereRead) {
    const std::string doubles = entry_text("A") + entry_text("a");
    const std::string spellings = "<Notifier Name=\"SRV\">" + doubles + "</Notifier>" +
                                  "<Notifier Name=\"srv\">" + entry_text("B") + "</Notifier>";
    write_configuration(document(spellings, "", doubles));
    // A refused open is tried again, for reading and for writing.
    const auto refuse_open = [] {
        platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 3);
    };
    refuse_open();
    (file.*Access::devices.write)(nodes);
    EXPECT_EQ(configuration(), document(spellings, added, doubles));
    ConfigurationFileNodes first = nodes;
    first.certificates = {entry("A"), entry("a")};
    refuse_open();
    Access::replace(file, first, {}, nodes);
    EXPECT_EQ(configuration(), document(doubles + added, "", added));
}

// Stored texts that were read are kept, but for those in a form that is not the writer's.
TEST_F(WriteCycleTest, TheFileIsTheOneThatEncipheringEachPasswordGives) {
    nodes.certificates = {entry("A", "", "", "", "one password"), entry("B", "", "", "", "two")};
    nodes.notifiers["NEW"][0].password = "one password";
    Access::replace(file, nodes, {}, nodes);
    std::string before = configuration();
    const std::string tail = "-----END ENCIPHERED PASSWORD-----\n";
    before.replace(before.find(tail), tail.size(), tail + "\n");
    before.insert(before.rfind("-----BEGIN"), "a word before it\n");
    write_configuration(before);
    ConfigurationFileNodes changed;
    changed.certificates = {entry("B", "", "", "", "three")};
    (file.*Access::notifiers.write)(changed);
    const std::string after = configuration();
    Access::replace(file, Access::read(file, Access::notifiers), {}, nodes);
    EXPECT_EQ(configuration(), after);
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

} // namespace
} // namespace store_test
