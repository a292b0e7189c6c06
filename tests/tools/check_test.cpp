#include <nlohmann/json.hpp>

#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Check : public ProgramTest {
  protected:
    std::string check(int status) {
        const support::CommandResult result = run({"check"});
        EXPECT_EQ(result.status, status) << result.output << result.errors;
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    void write_sections(const std::string& notifiers, const std::string& devices) {
        support::write_file(file(), "<ORVACertificates><Notifiers>" + notifiers +
                                        "</Notifiers><SIPDevices>" + devices +
                                        "</SIPDevices></ORVACertificates>");
    }
};

TEST_F(Check, NothingSetYetIsNoProblem) {
    EXPECT_THAT(check(0), HasSubstr("note: nothing has been set yet: " + file() + " is not there"));
    support::write_file(file(), "");
    EXPECT_THAT(check(0), HasSubstr("warning: nothing has been set yet: " + file() + " is empty"));
    support::set_variable("ORVA_Certificates", file()); // the first look makes a named file
    EXPECT_THAT(check(0), HasSubstr("note: nothing has been set yet: " + file() + " is empty"));
}

TEST_F(Check, AWholeFileHasNoFindings) {
    const Words words{"set",           "sip-device", "--server",      "S",   "--public-key", file(),
                      "--private-key", file(),       "--certificate", file()};
    done(words + Words{"--password-stdin"}, "geheim");
    EXPECT_EQ(check(0), "ok: key file " + in_root("_PublicKey.bin") + "\nok: key file " +
                            in_root("_PrivateKey.bin") + "\nok: " + file() + " holds 1 entry\n");
    std::string text = support::read_file(file());
    support::write_file(file(), text.insert(text.find("</PublicKeyPath>"), ".gone"));
    EXPECT_THAT(check(0), HasSubstr("warning: the entry sip-device of the server 'S' names " +
                                    file() + ".gone: No such file or directory\n"));
    const auto findings = nlohmann::json::parse(done({"check", "--format=json"}));
    EXPECT_EQ(findings[3]["code"], "named_file_missing");
    EXPECT_EQ(findings[3]["severity"], "warning");
    EXPECT_EQ(findings[3]["role"], "sip-device");
    EXPECT_EQ(findings[3]["server"], "S");
    EXPECT_EQ(findings[0]["path"], in_root("_PublicKey.bin"));
}

TEST_F(Check, FaultsOfTheFileAreReportedWithTheirRemedy) {
    const std::vector<std::pair<const char*, const char*>> cases{
        {"<ORVACertificates>\n<Notifiers>\n<a", " is not well-formed: [line 3, pos "},
        {"text", " is not well-formed: [line 1, pos 4]"},
        {"<!-- <ORVACertificates> --><orvacertificates/>",
         "root element 'orvacertificates' in place of 'ORVACertificates'"},
        {"<?xml version='1.0'?>\n<ORVACertificatesX/>", "root element 'ORVACertificatesX'"},
    };
    for (const auto& [text, finding] : cases) {
        support::write_file(file(), text);
        EXPECT_THAT(check(1), AllOf(HasSubstr("problem: "), HasSubstr(finding))) << text;
    }
    support::write_file(file(), "<?xml version='1.0'?><!--a--><ORVACertificates />");
    EXPECT_THAT(check(0), HasSubstr("ok: " + file() + " holds 0 entries"));
}

TEST_F(Check, EntriesThatNoLookUpFindsAreReported) {
    const auto under = [](const std::string& server, const std::string& element) {
        return "<Notifier Name=\"" + server + "\"><" + element + "/></Notifier>";
    };
    const std::vector<std::tuple<std::string, std::string, const char*>> cases{
        // entries of the section Notifiers, of SIPDevices, the finding
        {under("S", "SIPDevice"), "", "is in the section Notifiers, where nobody looks"},
        {under("S", "ServerGroupCertificate"), "", "is under a server, where nobody looks"},
        {"", "<SIPDevice/>", "is outside of all servers, where nobody looks"},
        {"", under("SRV", "SIPDevice") + under("srv", "SIPDevice"),
         "the entry sip-device of the server 'srv' is hidden by the server 'SRV'"},
        {"<ServerGroupCertificate/><servergroupcertificate/>", "",
         "the entry cluster is there twice"},
    };
    for (const auto& [notifiers, devices, finding] : cases) {
        write_sections(notifiers, devices);
        EXPECT_THAT(check(1), HasSubstr(finding)) << notifiers << devices;
    }
    write_sections("<Extra/>", "");
    EXPECT_THAT(check(0),
                HasSubstr("warning: the entry Extra in the section Notifiers belongs to"));
    write_sections(under("SRV", "WebConfigCertificate"), under("srv", "SIPDevice"));
    EXPECT_THAT(check(0), Not(HasSubstr("hidden"))) << "sections are looked through one by one";
}

} // namespace
} // namespace tools_test
