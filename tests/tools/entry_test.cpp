#include <nlohmann/json.hpp>

#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class Entries : public ProgramTest {
  protected:
    static Words get_words(const RoleCase& role) {
        const Words words{"get", role.name};
        return role.by_server ? words + Words{"--server", "srv01"} : words;
    }
};

TEST_F(Entries, EveryRoleKeepsItsOwnEntry) {
    for (const RoleCase& role : all_roles) {
        const Words trusted{"--trusted", std::string("/t&<>/") + role.name};
        const Words words = set_words(role.name, std::string("/é🔑\"'> /") + role.name);
        done((role.trusted ? words + trusted : words) + Words{"--password-stdin"}, role.name);
    }
    for (const RoleCase& role : all_roles) {
        const std::string name = role.name;
        const std::string path = "/é🔑\"'> /" + name;
        const Json server = role.by_server ? Json("srv01") : Json();
        const Json trusted = role.trusted ? Json("/t&<>/" + name) : Json();
        Json expected{{"role", name},
                      {"server", server},
                      {"public_key", path + ".pub"},
                      {"private_key", path + ".key"},
                      {"certificate", path + ".crt"},
                      {"trusted", trusted},
                      {"password", nullptr}};
        EXPECT_EQ(Json::parse(done(get_words(role) + Words{"--format", "json"})), expected);
        expected["password"] = name;
        EXPECT_EQ(Json::parse(done(get_words(role) + Words{"--format=json", "--show-password"})),
                  expected);
        std::string lines = "role: " + name;
        lines += role.by_server ? "\nserver: srv01" : "";
        lines += "\npublic_key: " + path + ".pub";
        lines += "\nprivate_key: " + path;
        lines += ".key\ncertificate: " + path + ".crt\n";
        lines += role.trusted ? "trusted: /t&<>/" + name + "\n" : "";
        EXPECT_EQ(done(get_words(role)), lines);
        EXPECT_EQ(done(get_words(role) + Words{"--show-password"}),
                  lines.append("password: ").append(name).append("\n"));
    }
}

TEST_F(Entries, AListHasAllOfThemInTheOrderOfTheFile) {
    EXPECT_EQ(done({"list"}), "");
    EXPECT_EQ(done({"list", "--format", "json"}), "[]\n");
    done(set_words("media-retrieval-client", "/m"));
    done(set_words("subsystems", "/s") + Words{"--password-stdin"}, "geheim");
    done(set_words("cluster", "/c"));
    EXPECT_EQ(done({"list"}), "cluster\t\t/c.pub\t/c.key\t/c.crt\t\n"
                              "subsystems\tSRV01\t/s.pub\t/s.key\t/s.crt\t\n"
                              "media-retrieval-client\tSRV01\t/m.pub\t/m.key\t/m.crt\t\n");
    EXPECT_THAT(done({"list", "--show-passwords"}), HasSubstr("/s.crt\t\tgeheim\n"));
    const Json hidden = Json::parse(done({"list", "--format", "json"}));
    const Json shown = Json::parse(done({"list", "--format", "json", "--show-passwords"}));
    ASSERT_EQ(hidden.size(), 3U);
    EXPECT_EQ(hidden[1]["password"], Json());
    EXPECT_EQ(shown[0]["password"], "");
    EXPECT_EQ(shown[1]["password"], "geheim");
    EXPECT_EQ(shown[0]["server"], Json());
}

TEST_F(Entries, ASecondSetReplacesThePasswordAndTheTrustedPathToo) {
    const Words words = set_words("remote-client", "/a");
    done(words + Words{"--trusted", "/t", "--password-stdin"}, "geheim");
    done(words);
    const Json entry = Json::parse(
        done({"get", "remote-client", "--server", "SRV01", "--format=json", "--show-password"}));
    EXPECT_EQ(entry["trusted"], "");
    EXPECT_EQ(entry["password"], "");
}

TEST_F(Entries, AMissingEntryIsToldByTheStatus) {
    done(set_words("cluster", "/c"));
    const auto result = run({"get", "sip-device", "--server", "SRV01"});
    EXPECT_EQ(result.status, 3);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors,
              "vdcertificates: there is no entry of the role sip-device for the server SRV01\n");
    EXPECT_EQ(run({"get", "subsystems-remote-client", "--server", "srv01.example"}).status, 3);
}

TEST_F(Entries, ARemoteClientIsFoundByItsShortName) {
    done(set_words("subsystems-remote-client", "/a"));
    EXPECT_THAT(done({"get", "subsystems-remote-client", "--server", "srv01.example"}),
                HasSubstr("public_key: /a.pub\n"));
}

TEST_F(Entries, AFailureShowsTheCauseOfTheLibrary) {
    const auto missing = run({"get", "cluster"});
    EXPECT_EQ(missing.status, 1);
    EXPECT_EQ(missing.output, "");
    EXPECT_THAT(missing.errors, HasSubstr(file()));
    EXPECT_THAT(missing.errors, HasSubstr("[error.qnfile.io.open]\n"));

    support::write_file(machine.file("plain"), "");
    environment["ORVA_Certificates"] = machine.file("plain/below/x.xml");
    const auto directory = run(set_words("cluster", "/c"));
    EXPECT_EQ(directory.status, 1);
    EXPECT_THAT(directory.errors,
                HasSubstr("Failed to create the directory: " + machine.file("plain/below") + "."));

    environment["HOME"] = machine.file("plain");
    EXPECT_EQ(run({"list"}).status, 1) << "no place for the keys";
}

TEST_F(Entries, ATraceThatTheUserWantsIsLeftAlone) {
    environment["QNTRACE"] = "11";
    environment["QNTRACE_FILE"] = machine.file("trace.log");
    const auto result = run({"get", "cluster"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "vdcertificates: the cause stands in the library's trace (QNTRACE)\n");
    EXPECT_THAT(support::read_file(machine.file("trace.log")), HasSubstr(file()));
}

TEST_F(Entries, ASetThatLosesEntriesSaysSo) {
    done(set_words("sip-device", "/a"));
    std::string text = support::read_file(file());
    text.insert(text.find("<SIPDevices>"), "<a></b>");
    support::write_file(file(), text);
    const auto result = run(set_words("cluster", "/c"));
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("what stood behind that place is lost"));
    EXPECT_THAT(done({"list"}), Not(HasSubstr("sip-device")));
}

TEST_F(Entries, ControlCharactersOfOthersReachNoTerminal) {
    support::write_file(machine.file("x.xml"),
                        "<ORVACertificates><Notifiers><ServerGroupCertificate><PublicKeyPath>a&#27;"
                        "&#10;b</PublicKeyPath></ServerGroupCertificate></Notifiers>"
                        "</ORVACertificates>");
    environment["ORVA_Certificates"] = machine.file("x.xml");
    EXPECT_THAT(done({"get", "cluster"}), HasSubstr("public_key: a\\x1b\\x0ab\n"));
    EXPECT_EQ(Json::parse(done({"get", "cluster", "--format=json"}))["public_key"], "a\x1B\nb");
}

} // namespace
} // namespace tools_test
