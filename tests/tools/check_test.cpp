#include "platform/file.h"
#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Check : public ProgramTest {
  protected:
    Check() { done({"where"}); } // makes the keys

    std::string check(int status) {
        const support::CommandResult result = run({"check"});
        EXPECT_EQ(result.status, status) << result.output << result.errors;
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    void write_sections(const std::string& notifiers, const std::string& devices = "") {
        support::write_file(file(), "<ORVACertificates><Notifiers>" + notifiers +
                                        "</Notifiers><SIPDevices>" + devices +
                                        "</SIPDevices></ORVACertificates>");
    }

    void replace(const std::string& before, const std::string& after) {
        std::string text = support::read_file(file());
        text.replace(text.find(before), before.size(), after);
        support::write_file(file(), text);
    }
};

TEST_F(Check, NothingSetYetIsNoProblem) {
    EXPECT_THAT(check(0), HasSubstr("note: nothing has been set yet: " + file() + " is not there"));
    support::write_file(file(), "");
    EXPECT_THAT(check(0), HasSubstr("note: nothing has been set yet: " + file() + " is empty"));
}

TEST_F(Check, AWholeFileIsWell) {
    const Words words{"set",           "sip-device", "--server",      "S",   "--public-key", file(),
                      "--private-key", file(),       "--certificate", file()};
    done(words + Words{"--password-stdin"}, "geheim");
    EXPECT_EQ(check(0), "ok: key file " + in_root("_PublicKey.bin") + "\nok: key file " +
                            in_root("_PrivateKey.bin") + "\nok: " + file() + "\n");
    replace("</PublicKeyPath>", ".gone</PublicKeyPath>");
    EXPECT_THAT(check(0), HasSubstr("warning: the entry sip-device of the server 'S' names " +
                                    file() + ".gone: No such file or directory\n"));
}

TEST_F(Check, FaultsOfTheFileAreToldWithWhatToDo) {
    struct Case {
        const char* text;
        const char* finding;
    };
    const std::vector<Case> cases{
        {"<ORVACertificates><Notifiers></SIPDevices>", " is not well-formed: [line 1, pos "},
        {"<ORVACertificates>\n<Notifiers>\n<a", " is not well-formed: [line 3, pos "},
        {"text", " is not well-formed: [line 1, pos 4]"},
        {"<!-- nothing -->", "root element ''"},
        {"<!-- <ORVACertificates> --><orvacertificates/>",
         "root element 'orvacertificates' in place of 'ORVACertificates'"},
        {"<?xml version='1.0'?>\n<ORVACertificatesX/>", "root element 'ORVACertificatesX'"},
    };
    for (const Case& broken : cases) {
        support::write_file(file(), broken.text);
        EXPECT_THAT(check(1), AllOf(HasSubstr("problem: "), HasSubstr(broken.finding)))
            << broken.text;
    }
    for (const char* well : {"<?xml version='1.0'?><!--a--><ORVACertificates />",
                             "<ORVACertificates><Notifiers/></ORVACertificates>"}) {
        support::write_file(file(), well);
        EXPECT_THAT(check(0), HasSubstr("ok: " + file())) << well;
    }
}

TEST_F(Check, APasswordOfAnotherKeyPairIsToldByItsPlace) {
    done(set_words("cluster", "/c"));
    done(set_words("sip-device", "/d") + Words{"--password-stdin"}, "geheim");
    for (const char* key : {"_PublicKey.bin", "_PrivateKey.bin"}) {
        support::remove_all(in_root(key));
    }
    EXPECT_THAT(check(1),
                AllOf(HasSubstr("problem: the password of the entry behind cluster cannot be "
                                "deciphered ("),
                      HasSubstr("the key pair was replaced"), HasSubstr("Keep a copy")));
}

TEST_F(Check, AKeyFileThatHadToBeReplacedIsTold) {
    const std::string key = in_root("_PublicKey.bin");
    std::filesystem::permissions(key, std::filesystem::perms::owner_write,
                                 std::filesystem::perm_options::add);
    support::write_file(key, "not a key");
    EXPECT_THAT(check(1), HasSubstr("problem: the key pair was unusable and has been replaced"));
    EXPECT_THAT(check(0), Not(HasSubstr("problem")));
}

TEST_F(Check, AFileThatIsInUseIsNotMistakenForABrokenOne) {
    done(set_words("cluster", "/c"));
    const auto handle = platform::open_file(file(), platform::FileAccess::read,
                                            platform::FileDisposition::open_existing,
                                            platform::FileSharing::read_write, {});
    ASSERT_TRUE(handle);
    EXPECT_THAT(check(1), HasSubstr("problem: " + file() + " cannot be opened: "));
    platform::close_file(*handle);
}

TEST_F(Check, EntriesThatNobodyFindsAreTold) {
    const auto under = [](const std::string& server, const std::string& element) {
        return "<Notifier Name=\"" + server + "\"><" + element + "/></Notifier>";
    };
    struct Case {
        std::string notifiers;
        std::string devices;
        std::string finding;
        int status = 1;
    };
    const std::vector<Case> cases{
        {under("S", "SIPDevice"), "", "stands in the section Notifiers, where nobody looks"},
        {under("S", "ServerGroupCertificate"), "", "stands under a server, where nobody looks"},
        {"", "<SIPDevice/>", "stands outside of all servers, where nobody looks"},
        {"<Extra/>", "", "warning: the entry 'Extra' in the section Notifiers belongs to no role",
         0},
        {"", under("SRV", "SIPDevice") + under("srv", "SIPDevice"),
         "the entry sip-device of the server 'srv' is hidden by the server 'SRV'"},
        {"<ServerGroupCertificate/><servergroupcertificate/>", "",
         "the entry cluster stands twice"},
    };
    for (const Case& odd : cases) {
        write_sections(odd.notifiers, odd.devices);
        EXPECT_THAT(check(odd.status), HasSubstr(odd.finding)) << odd.notifiers << odd.devices;
    }
    write_sections(under("SRV", "WebConfigCertificate"), under("srv", "SIPDevice"));
    EXPECT_THAT(check(0), Not(HasSubstr("hidden"))) << "sections are looked through one by one";
}

} // namespace
} // namespace tools_test
