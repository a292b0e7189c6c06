// Reading of documents, merging of sections, the text written, and whole changes.
#include "ConfigurationFile/errors.h"
#include "ConfigurationFile/password_cipher.h"
#include "qncertificates/certificate_keys.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/allocations.h"
#include "tests/support/failure.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

using Access = vdcertificates::ConfigurationFileAccess;
using vdcertificates::ConfigurationFileNodes;

class DocumentTest : public StoreTest {
  protected:
    vdcertificates::ConfigurationFile file;
};

const std::string server = "<Notifier Name='S'><A><PublicKeyPath>p</PublicKeyPath></A></Notifier>";

TEST_F(DocumentTest, IsReadInManyForms) {
    const std::pair<std::string, const char*> cases[] = {
        {"", ""},
        {"<ORVACertificates/>", ""},
        {"<orvaCertificates><Notifiers><A/></Notifiers></orvaCertificates>", ""},
        {"<Other>" + document("<A/>") + "</Other>", ""},
        {"\xEF\xBB\xBF<?xml version='1.0' encoding='utf-8'?>\n<!-- c -->" +
             document("\n\t" + server),
         "[S:A(p,,,,)]"},
        {document("<A><PublicKeyPath>1</PublicKeyPath><PublicKeyPath>2</PublicKeyPath></A>"),
         "A(2,,,,)"},
        {document("<A><TrustedCertificatePath>t</TrustedCertificatePath><Other>x</Other>"
                  "<CertificatePath>c</CertificatePath><PrivateKeyPath>k</PrivateKeyPath>"
                  "<Password></Password></A>"),
         "A(,k,c,,t)"},
        {document("<A><x><PublicKeyPath>deep</PublicKeyPath></x><publickeypath>x</publickeypath>"
                  "</A>"),
         "A(,,,,)"},
        {document("<A><PublicKeyPath>a&amp;<![CDATA[<b>]]>&#x63;<i>d</i></PublicKeyPath></A>"),
         "A(a&<b>cd,,,,)"},
        {document("<notifier Name=\"X\"><A/></notifier>"), "notifier(,,,,)"},
        {document("<Notifier><A/></Notifier><Notifier name=\"X\"><A/></Notifier>"),
         "[:A(,,,,)A(,,,,)]"},
        {document("<Notifier Name=\"empty\"></Notifier>"), ""},
        {document(server + server + "<Notifier Name=\"s\"><B/></Notifier>"),
         "[S:A(p,,,,)A(p,,,,)][s:B(,,,,)]"},
        {"<ORVACertificates><Notifiers><A/></Notifiers><x/>text<Notifiers><B/></Notifiers>"
         "<notifiers><C/></notifiers></ORVACertificates>",
         "A(,,,,)B(,,,,)"},
        {document("<A/>") + document("<B/>") + "<&", "A(,,,,)"},
    };
    for (const auto& [text, expected] : cases) {
        write_configuration(text);
        ConfigurationFileNodes nodes;
        nodes.certificates = {entry("old")};
        nodes.notifiers["old"] = {};
        Access::read(file, "Notifiers", nodes);
        EXPECT_EQ(show(nodes), expected) << text;
        nodes = {};
        Access::read_section(file, "Notifiers", nodes, [](const auto* name) { return !name; });
        EXPECT_EQ(show(nodes), std::string(expected).substr(0, std::string(expected).find('[')));
    }
}

TEST_F(DocumentTest, KeepsWhatWasReadBeforeAFault) {
    const std::pair<std::string, const char*> cases[] = {
        // The document, and the position of the fault; none for an undecipherable password.
        {"<ORVACertificates><Notifiers><A/></Notifiers>&", "[line 1, pos 46]: "},
        {document("<A/><A><Password>no cipher text</Password></A><B/>"), ""},
        {"<ORVACertificates><Notifiers><A/></Notifiers>", "[line 1, pos 45]: "},
    };
    for (const auto& [text, place] : cases) {
        write_configuration(text);
        ConfigurationFileNodes nodes;
        nodes.certificates = {entry("old")};
        const auto error = support::error_of([&] { Access::read(file, "Notifiers", nodes); });
        ASSERT_TRUE(error) << text;
        EXPECT_THAT(error->text(), testing::StartsWith(place));
        EXPECT_EQ(show(nodes), "A(,,,,)") << text;
        std::string publicKey = "kept";
        std::string other;
        EXPECT_FALSE(file.get_cluster_certificate_information(publicKey, other, other, other));
        EXPECT_EQ(publicKey, "kept");
    }
}

TEST_F(DocumentTest, MergesNewEntriesByFoldedName) {
    const auto a1 = entry("A", "1", "1", "1", "", "1");
    const auto a2 = entry("a", "2", "2", "2", "", "");
    const auto b1 = entry("B", "1");
    // The rule, the new entries, the existing ones, and the result.
    const std::tuple<const char*, ConfigurationFileNodes, ConfigurationFileNodes, const char*>
        cases[] = {
            {"new entries in their order", {{b1, a1}, {}}, {}, "B(1,,,,)A(1,1,1,,1)"},
            {"all entries of a name are overwritten and keep their spelling",
             {{a2}, {}},
             {{a1, b1, a1}, {}},
             "A(2,2,2,,)B(1,,,,)A(2,2,2,,)"},
            {"the last of two new ones wins", {{a1, a2}, {}}, {}, "A(2,2,2,,)"},
            {"a role new under a key comes after the others",
             {{}, {{"srv", {b1, a2}}}},
             {{}, {{"SRV", {a1}}}},
             "[SRV:A(2,2,2,,)B(1,,,,)]"},
            {"a new key is taken as it is, with duplicates",
             {{}, {{"new", {a1, a2}}}},
             {{}, {{"SRV", {b1}}}},
             "[SRV:B(1,,,,)][new:A(1,1,1,,1)a(2,2,2,,)]"},
            {"every spelling of a key is changed",
             {{}, {{"sRv", {a2}}}},
             {{}, {{"SRV", {a1}}, {"srv", {b1}}}},
             "[SRV:A(2,2,2,,)][srv:B(1,,,,)a(2,2,2,,)]"},
            {"two new spellings of a key end under the first",
             {{}, {{"SRV", {a1}}, {"srv", {a2}}, {"T", {}}}},
             {},
             "[SRV:A(2,2,2,,)][T:]"},
            {"only ASCII letters fold",
             {{}, {{"\xC3\x84", {a2}}}},
             {{}, {{"\xC3\xA4", {a1}}}},
             "[\xC3\x84:a(2,2,2,,)][\xC3\xA4:A(1,1,1,,1)]"},
        };
    for (const auto& [rule, added, existing, merged] : cases) {
        ConfigurationFileNodes nodes = existing;
        Access::merge(file, added, nodes, "S");
        EXPECT_EQ(show(nodes), merged) << rule;
        Access::merge(file, nodes, nodes, "S");
        EXPECT_EQ(show(nodes), merged) << rule << ", merged with itself";
    }
}

// Required: only the trusted path is escaped, and only three characters of it.
TEST_F(DocumentTest, HasServersInByteOrderAndOneEscapedField) {
    ConfigurationFileNodes nodes;
    nodes.notifiers["srv02"] = {entry("F")};
    nodes.notifiers["SRV03"] = {};
    nodes.notifiers["A\"b"] = {entry("E", "p&", "k\"", "a<b>&c", "", "a<b>&c\"'")};
    nodes.certificates = {entry("D")};
    EXPECT_EQ(Access::merge(file, {}, nodes, "S"),
              "<S>" + entry_text("D") +
                  "<Notifier Name=\"A\"b\"><E><PublicKeyPath>p&</PublicKeyPath>"
                  "<PrivateKeyPath>k\"</PrivateKeyPath><CertificatePath>a<b>&c</CertificatePath>"
                  "<Password></Password><TrustedCertificatePath>a&lt;b&gt;&amp;c\"'"
                  "</TrustedCertificatePath></E></Notifier><Notifier Name=\"SRV03\"></Notifier>"
                  "<Notifier Name=\"srv02\">" +
                  entry_text("F") + "</Notifier></S>");
}

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
        // Required: this one alone writes after the failed read, so the entries are lost.
        {Access::media_retrieval, "", false},
    };
    const std::string moved = machine.file("x.xml");
    const support::EnvironmentGuard variable("ORVA_Certificates", moved);
    for (const auto& [section, function, stops] : setters) {
        const std::string before = document("<A/>", "<B/>", "<C/>");
        support::write_file(moved, before);
        const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
        platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 3);
        const auto error =
            support::error_of([&, setter = section.write] { (file.*setter)(nodes); });
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
    const std::string twice = entry_text("A") + entry_text("a");
    const std::string spellings = "<Notifier Name=\"SRV\">" + twice + "</Notifier>" +
                                  "<Notifier Name=\"srv\">" + entry_text("B") + "</Notifier>";
    write_configuration(document(spellings, "", twice));
    // A refused open is tried again, for reading and for writing.
    platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 3);
    (file.*Access::devices.write)(nodes);
    EXPECT_EQ(configuration(), document(spellings, added, twice));
    ConfigurationFileNodes first = nodes;
    first.certificates = {entry("A"), entry("a")};
    const ConfigurationFileNodes none;
    replace(file, {&first, &none, &nodes});
    EXPECT_EQ(configuration(), document(twice + added, "", added));
}

// Stored texts are kept, except those in a form that the writer does not produce.
TEST_F(WriteCycleTest, TheFileIsTheOneThatEncipheringEachPasswordGives) {
    nodes.certificates = {entry("A", "", "", "", "one password"), entry("B", "", "", "", "two")};
    nodes.notifiers["NEW"][0].password = "one password";
    const ConfigurationFileNodes none;
    replace(file, {&nodes, &none, &nodes});
    std::string before = configuration();
    const std::string tail = "-----END ENCIPHERED PASSWORD-----\n";
    before.replace(before.find(tail), tail.size(), tail + "\n");
    before.insert(before.rfind("-----BEGIN"), "a word before it\n");
    write_configuration(before);
    ConfigurationFileNodes changed;
    changed.certificates = {entry("B", "", "", "", "three")};
    (file.*Access::notifiers.write)(changed);
    const std::string after = configuration();
    const ConfigurationFileNodes read = Access::read(file, Access::notifiers);
    const ConfigurationFileNodes media = Access::read(file, Access::media_retrieval);
    replace(file, {&read, &none, &media}, 500);
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
