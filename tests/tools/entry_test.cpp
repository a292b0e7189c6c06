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
    support::write_file(
        file(), document("<Notifier Name='B'><RemoteClientCertificate/><WebConfigCertificate/>"
                         "</Notifier><Notifier Name='b'><remoteclientcertificate/></Notifier>",
                         "<Notifier Name='b'><SIPDevice/></Notifier>"));
    done({"remove", "remote-client", "--server", "b"});
    EXPECT_EQ(done({"list"}), "web-config\tB\t\t\t\t\nsip-device\tb\t\t\t\t\n");
    done({"remove", "--all-roles", "--server", "B"});
    EXPECT_EQ(done({"list"}) + done({"list", "--format", "json"}), "[]\n");
    EXPECT_THAT(support::read_file(file()), Not(HasSubstr("Notifier ")));
}

TEST_F(Entries, AFailureShowsTheCauseOfTheLibrary) {
    support::write_file(machine.file("plain"), "");
    platform::testing::set_environment_variable("ORVA_Certificates",
                                                machine.file("plain/below/x.xml"));
    const auto cause = platform::create_directory(machine.file("plain/below"));
    refused(1, set_words("cluster", "/c"), platform::describe(cause));
}

TEST_F(Entries, ControlCharactersAreShownAsEscapes) {
    support::write_file(file(),
                        document("<ServerGroupCertificate><PublicKeyPath>a&#27;&#10;b&#x9B;&#x202E;"
                                 "</PublicKeyPath></ServerGroupCertificate>"));
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
    const auto expect_stored = [&](const std::string& json) {
        EXPECT_THAT(done({"get", "cluster", "--format=json", "--show-password"}),
                    HasSubstr("\"password\": " + json));
    };
    for (const auto& [given, json] : cases) {
        done(words + Words{"--password-stdin"}, given);
        expect_stored(json);
        support::write_file(password_file, given);
        done(words + Words{"--password-file", password_file}, "not this");
        expect_stored(json);
    }
    done(words, "not a password"); // standard input is read only on request
    expect_stored("\"\"");
}

TEST_F(Entries, WhereReportsTheFilesAndTheRules) {
    EXPECT_EQ(done({"where"}), "file: " + file() + " (not there yet)\n" +
                                   "file chosen by: the directory of the keys\npublic key: " +
                                   in_root("_PublicKey.bin") +
                                   "\nprivate key: " + in_root("_PrivateKey.bin") +
                                   "\nkeys chosen by: the user's profile\n");
    const Json json = Json::parse(done({"where", "--format=json"}));
    EXPECT_EQ(json["file"], file());
    EXPECT_EQ(json["file_exists"], false);

    const std::string moved = machine.file("moved/x.xml");
    platform::testing::set_environment_variable("ORVA_Certificates", moved);
    const std::string text = done({"where"});
    EXPECT_THAT(text, HasSubstr("file: " + moved + "\nfile chosen by: the environment variable "));
    EXPECT_THAT(text, HasSubstr("note: made the empty file " + moved + "\n"));
    platform::testing::set_environment_variable("ORVA_Certificates", std::nullopt);

    const std::string all = machine.file("all");
    std::filesystem::create_directory(all);
    platform::testing::store_machine_root(all + platform::preferred_separator);
    EXPECT_THAT(done({"where"}),
                HasSubstr("private key: " + all + in_root("").substr(root().size()) +
                          "_PrivateKey.bin\nkeys chosen by: the machine's setting in " +
                          platform::machine_setting_source() + "\n"));
}

TEST_F(Entries, APlaceThatCannotBeWrittenIsExplained) {
    support::write_file(machine.file("plain"), "");
    platform::testing::store_machine_root(machine.file("plain"));
    const std::string named = machine.file("directory.xml");
    std::filesystem::create_directory(named);
    platform::testing::set_environment_variable("ORVA_Certificates", named);
    const std::string text = done({"where"});
    EXPECT_THAT(text, HasSubstr("file chosen by: the directory of the keys\n"));
    EXPECT_THAT(text, HasSubstr("keys chosen by: the user's profile\n"));
    EXPECT_THAT(text, HasSubstr("warning: the file " + named + ", which ORVA_Certificates names"));
    EXPECT_THAT(text, HasSubstr("warning: the directory " + machine.file("plain") + ", which the"));
    refused(1, set_words("cluster", "/c"), "nothing is changed");
    EXPECT_FALSE(std::filesystem::exists(file())) << "a change somewhere else";
}

class Check : public ProgramTest {
  protected:
    std::string check(int status) {
        const support::CommandResult result = run({"check"});
        EXPECT_EQ(result.status, status) << result.output << result.errors;
        EXPECT_EQ(result.errors, "");
        return result.output;
    }
};

TEST_F(Check, NothingSetYetIsNoProblem) {
    EXPECT_THAT(check(0), HasSubstr("note: nothing has been set yet: " + file() + " is not there"));
    support::write_file(file(), "");
    EXPECT_THAT(check(0), HasSubstr("warning: nothing has been set yet: " + file() + " is empty"));
    // The first look makes a file that the variable names.
    platform::testing::set_environment_variable("ORVA_Certificates", file());
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
    const auto findings = Json::parse(done({"check", "--format=json"}));
    EXPECT_EQ(findings[3]["code"], "named_file_missing");
    EXPECT_EQ(findings[3]["role"], "sip-device");
    EXPECT_EQ(findings[3]["server"], "S");
    EXPECT_EQ(findings[0]["path"], in_root("_PublicKey.bin"));
}

TEST_F(Check, FaultsOfTheFileAreReported) {
    const auto under = [](const std::string& server, const std::string& element) {
        return "<Notifier Name=\"" + server + "\"><" + element + "/></Notifier>";
    };
    const std::vector<std::tuple<std::string, int, std::string>> cases{
        // content, status, finding
        {"<ORVACertificates>\n<Notifiers>\n<a", 1, " is not well-formed: [line 3, pos "},
        {"<!-- <ORVACertificates> --><orvacertificates/>", 1,
         "root element 'orvacertificates' in place of 'ORVACertificates'"},
        {"<?xml version='1.0'?><!--a--><ORVACertificates />", 0,
         "ok: " + file() + " holds 0 entries"},
        {document(under("S", "SIPDevice")), 1, "is in the section Notifiers, where nobody looks"},
        {document(under("S", "ServerGroupCertificate")), 1, "under a server, where nobody looks"},
        {document("", "<SIPDevice/>"), 1, "is outside of all servers, where nobody looks"},
        {document("", under("SRV", "SIPDevice") + under("srv", "SIPDevice")), 1,
         "the entry sip-device of the server 'srv' is hidden by the server 'SRV'"},
        {document("<ServerGroupCertificate/><servergroupcertificate/>"), 1,
         "the entry cluster is there twice"},
        {document("<Extra/>"), 0, "the entry Extra in the section Notifiers belongs to no role"},
    };
    for (const auto& [content, status, finding] : cases) {
        support::write_file(file(), content);
        EXPECT_THAT(check(status), HasSubstr(finding)) << content;
    }
    support::write_file(file(),
                        document(under("SRV", "WebConfigCertificate"), under("srv", "SIPDevice")));
    EXPECT_THAT(check(0), Not(HasSubstr("hidden"))) << "each section is searched on its own";
}

} // namespace
} // namespace tools_test
