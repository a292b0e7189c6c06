#include "ConfigurationFile/errors.h"
#include "platform/testing/testing.h"
#include "tests/ConfigurationFile/store_fixture.h"
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
        {"fault behind all sections", document("<A/>", "<B/>", "<C/>").substr(0, 80),
         document(a, added)},
        {"undecipherable in the first section", document("<A/>" + junk + "<C/>", "<B/>"),
         document(a, added)},
        {"undecipherable in the second section", document("<A/>", "<B/>" + junk, "<C/>"),
         document(a, b + added)},
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

TEST_F(WriteCycleTest, AFailureBeforeTheWriteLeavesTheFile) {
    const std::string before = document("<A/>");
    support::write_file(machine.file("x.xml"), before);
    nodes.notifiers["NEW"][0].password = std::string(1000, 'x');
    for (const Setter& setter : setters) {
        EXPECT_ANY_THROW((file.*setter.section.write)(nodes)) << setter.function;
        EXPECT_EQ(content(), before);
    }
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
