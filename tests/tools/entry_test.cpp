#include <nlohmann/json.hpp>

#include "platform/file_system.h"
#include "platform/machine.h"
#include "platform/path.h"
#include "platform/testing/testing.h"
#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;
using testing::Not;

class Entries : public ProgramTest {};

TEST_F(Entries, EveryRoleKeepsItsOwnEntry) {
    const std::vector<std::pair<std::string, bool>> roles{
        // name, has a trusted certificate
        {"cluster", false},
        {"subsystems", false},
        {"web-config", false},
        {"subsystems-server", true},
        {"subsystems-remote-client", true},
        {"remote-client", true},
        {"sip-device", true},
        {"media-retrieval-server", true},
        {"media-retrieval-client", true},
    };
    for (const auto& [role, trusts] : roles) {
        const Words words = set_words(role, "/é🔑\"'> /" + role) + Words{"--password-stdin"};
        done(trusts ? words + Words{"--trusted", "/t&<>/" + role} : words, role);
    }
    for (const auto& [role, trusts] : roles) {
        const std::string path = "/é🔑\"'> /" + role;
        const bool by_server = role != "cluster";
        const Json trusted = trusts ? Json("/t&<>/" + role) : Json();
        Json expected{{"role", role},
                      {"server", by_server ? Json("SRV01") : Json()}, // as it is stored
                      {"public_key", path + ".pub"},
                      {"private_key", path + ".key"},
                      {"certificate", path + ".crt"},
                      {"trusted", trusted},
                      {"password", nullptr}};
        const Words get = by_server ? Words{"get", role, "--server", "srv01"} : Words{"get", role};
        EXPECT_EQ(Json::parse(done(get + Words{"--format", "json"})), expected);
        expected["password"] = role;
        EXPECT_EQ(Json::parse(done(get + Words{"--format=json", "--show-password"})), expected);
        EXPECT_EQ(done(get), "role: " + role + (by_server ? "\nserver: SRV01" : "") +
                                 "\npublic_key: " + path + ".pub\nprivate_key: " + path +
                                 ".key\ncertificate: " + path + ".crt\n" +
                                 (trusted.is_null() ? "" : "trusted: /t&<>/" + role + "\n"));
        EXPECT_EQ(done(get + Words{"--show-password", "--field", "password"}), role + "\n");
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
}

TEST_F(Entries, AnUpdateChangesOnlyTheGivenFields) {
    done(set_words("remote-client", "/a") + Words{"--trusted", "/t", "--password-stdin"}, "one");
    const Words words{"update", "remote-client", "--server", "srv01"};
    const std::vector<std::pair<Words, std::string>> cases{
        // certificate, trusted, password
        {{"--certificate", "/new"}, "/new\t/t\tone\n"},
        {{"--trusted", ""}, "/new\t\tone\n"},
        {{"--password-stdin"}, "/new\t\ttwo\n"},
        {{"--no-password", "--trusted", "/u"}, "/new\t/u\t\n"},
    };
    for (const auto& [given, fields] : cases) {
        done(words + given, "two");
        EXPECT_EQ(done({"list", "--show-passwords"}),
                  "remote-client\tSRV01\t/a.pub\t/a.key\t" + fields);
    }
}

TEST_F(Entries, AMissingEntryHasItsOwnStatus) {
    const Words device{"sip-device", "--server", "SRV01"};
    refused(3, {"get", "cluster"}, "vdcertificates: there is no entry of the role cluster\n");
    done(set_words("cluster", "/c"));
    const std::string line =
        "vdcertificates: there is no entry of the role sip-device for the server SRV01\n";
    for (const char* command : {"get", "remove"}) {
        refused(3, Words{command} + device, line);
    }
    refused(3, Words{"update"} + device + Words{"--no-password"}, line);
    refused(3, {"remove", "--server", "SRV01", "--all-roles"}, "no entry for the server SRV01");
    const Words by_long_name{"get", "subsystems-remote-client", "--server", "srv01.example"};
    refused(3, by_long_name, "no entry");
    done(set_words("subsystems-remote-client", "/a"));
    EXPECT_EQ(done(by_long_name + Words{"--field", "server"}), "SRV01\n");
}

TEST_F(Entries, RemovalTakesEverySpelling) {
    support::write_file(file(), "<ORVACertificates><Notifiers><Notifier Name='B'>"
                                "<RemoteClientCertificate/><WebConfigCertificate/></Notifier>"
                                "<Notifier Name='b'><remoteclientcertificate/></Notifier>"
                                "</Notifiers><SIPDevices><Notifier Name='b'><SIPDevice/></Notifier>"
                                "</SIPDevices></ORVACertificates>");
    done({"remove", "remote-client", "--server", "b"});
    EXPECT_EQ(done({"list"}), "web-config\tB\t\t\t\t\nsip-device\tb\t\t\t\t\n");
    done({"remove", "--all-roles", "--server", "B"});
    EXPECT_EQ(done({"list"}), "");
    EXPECT_THAT(support::read_file(file()), Not(HasSubstr("Notifier ")));
}

TEST_F(Entries, AFailureShowsTheCauseOfTheLibrary) {
    support::write_file(machine.file("plain"), "");
    support::set_variable("ORVA_Certificates", machine.file("plain/below/x.xml"));
    refused(1, set_words("cluster", "/c"),
            "Failed to create the directory: " + machine.file("plain/below") + ".");
    support::set_variable("HOME", machine.file("plain"));
    support::set_variable("USERPROFILE", machine.file("plain"));
    const auto cause = platform::create_directory(machine.file("plain/below"));
    refused(1, {"list"}, platform::describe(cause));
}

TEST_F(Entries, ControlCharactersAreShownAsEscapes) {
    support::write_file(file(),
                        "<ORVACertificates><Notifiers><ServerGroupCertificate><PublicKeyPath>a&#27;"
                        "&#10;b&#x9B;&#x202E;</PublicKeyPath></ServerGroupCertificate></Notifiers>"
                        "</ORVACertificates>");
    EXPECT_THAT(done({"get", "cluster"}), HasSubstr("public_key: a\\x1b\\x0ab\\x9b\\u202e\n"));
    const std::string json = done({"get", "cluster", "--format=json"});
    EXPECT_THAT(json, HasSubstr("\"a\\u001b\\nb\\u009b\\u202e\""));
    EXPECT_EQ(done({"get", "cluster", "--field", "public_key"}), // unchanged for a pipe
              "a\x1b\nb\xC2\x9B\xE2\x80\xAE\n");
}

TEST_F(Entries, RelativePathsAreStoredWithAWarning) {
    const auto result = run(set_words("cluster", "here"));
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.errors, HasSubstr("warning: the path here.key is relative"));
    EXPECT_THAT(run({"check"}).output, HasSubstr("paths, which each program takes from its own"));
}

TEST_F(Entries, OneLineEndOfAPasswordIsDropped) {
    const std::vector<std::pair<std::string, std::string>> cases{
        // as JSON shows it
        {"geheim\r\n", "\"geheim\""},
        {"geheim\n\n", "\"geheim\\n\""},
        {" a \t\xC3\xA4<&>\" ", "\" a \\t\xC3\xA4<&>\\\" \""},
        {std::string(245, 'x') + "\r\n", "\"" + std::string(245, 'x') + "\""},
    };
    const Words words = set_words("cluster", "/c");
    const std::string password_file = machine.file("password");
    for (const auto& [given, json] : cases) {
        for (const Words& source :
             {Words{"--password-stdin"}, Words{"--password-file", password_file}}) {
            support::write_file(password_file, given);
            done(words + source, source.size() == 1 ? given : "not this");
            EXPECT_THAT(done({"get", "cluster", "--format=json", "--show-password"}),
                        HasSubstr("\"password\": " + json))
                << testing::PrintToString(given);
        }
    }
    done(words, "not a password"); // standard input is only read when asked for
    EXPECT_EQ(done({"get", "cluster", "--show-password", "--field=password"}), "\n");
}

TEST_F(Entries, WhereReportsTheFilesAndTheRules) {
    const auto lines = [](const std::string& file, const std::string& file_rule,
                          const std::string& prefix, const std::string& key_rule) {
        return "file: " + file + "\nfile chosen by: " + file_rule + "\npublic key: " + prefix +
               "_PublicKey.bin\nprivate key: " + prefix +
               "_PrivateKey.bin\nkeys chosen by: " + key_rule + "\n";
    };
    const std::string by_keys = "the directory of the keys";
    const std::string by_variable = "the environment variable ORVA_Certificates";
    const std::string by_profile = "the user's profile";
    EXPECT_EQ(done({"where"}),
              lines(file() + " (not there yet)", by_keys, in_root(""), by_profile));
    const Json json = Json::parse(done({"where", "--format=json"}));
    EXPECT_EQ(json["file"], file());
    EXPECT_EQ(json["file_exists"], false);
    EXPECT_EQ(json["findings"], Json::array());

    const std::string moved = machine.file("moved/x.xml");
    support::set_variable("ORVA_Certificates", moved);
    EXPECT_EQ(done({"where"}), lines(moved, by_variable, in_root(""), by_profile) +
                                   "note: made the empty file " + moved + "\n");
    support::set_variable("ORVA_Certificates", std::nullopt);

    const std::string directory = machine.file("all");
    std::filesystem::create_directory(directory);
    platform::testing::store_machine_root(directory + platform::preferred_separator);
    const std::string prefix = directory + in_root("").substr(root().size());
    EXPECT_THAT(done({"where"}),
                HasSubstr(lines(prefix + "_ORVA_Certificates.xml", by_keys, prefix,
                                "the machine's setting in " + platform::machine_setting_source())));
}

TEST_F(Entries, APlaceThatCannotBeWrittenIsExplained) {
    support::write_file(machine.file("plain"), "");
    platform::testing::store_machine_root(machine.file("plain"));
    const std::string named = machine.file("directory.xml");
    std::filesystem::create_directory(named);
    support::set_variable("ORVA_Certificates", named);
    const std::string text = done({"where"});
    EXPECT_THAT(text, HasSubstr("file chosen by: the directory of the keys\n"));
    EXPECT_THAT(text, HasSubstr("keys chosen by: the user's profile\n"));
    EXPECT_THAT(text, HasSubstr("warning: the file " + named + ", which ORVA_Certificates names"));
    EXPECT_THAT(text, HasSubstr("warning: the directory " + machine.file("plain") + ", which the"));
    refused(1, set_words("cluster", "/c"), "nothing is changed");
    EXPECT_FALSE(std::filesystem::exists(file())) << "a change somewhere else";
}

} // namespace
} // namespace tools_test
