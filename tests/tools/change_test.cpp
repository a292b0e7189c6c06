#include <nlohmann/json.hpp>

#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

using Json = nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class Changes : public ProgramTest {};

TEST_F(Changes, WhatCannotBeReadIsNotDropped) {
    const std::vector<std::tuple<std::string, std::string, const char*>> cases{
        // content, loss, what --discard-unreadable keeps besides the new entry
        {"hello", "all that " + file() + " holds, which cannot be read to its end ([line 1", ""},
        {"<ORVACertificates><Notifiers><Notifier Name='B'><WebConfigCertificate/><a></b>",
         "all that follows the entry web-config of the server 'B' in ", "web-config"},
        {"<other/>", "the document in " + file() + ", whose root element is 'other'", ""},
        {document("<WebConfigCertificate><Password>--</Password></WebConfigCertificate><Z/>"),
         "those of web-config would be lost", "Z"},
        {document("<Z><Deep/></Z>"), "the element 'Deep' of the entry Z", "Z"},
        {"<ORVACertificates><More/></ORVACertificates>", "the element 'More' in the root element",
         ""},
    };
    for (const auto& [content, loss, kept] : cases) {
        support::write_file(file(), content);
        for (const Words& change : {set_words("cluster", "/c"), Words{"remove", "cluster"},
                                    Words{"update", "cluster", "--no-password"}}) {
            refused(1, change, loss);
        }
        EXPECT_EQ(support::read_file(file()), content);
        EXPECT_FALSE(std::filesystem::exists(previous()));
        done(set_words("cluster", "/c") + Words{"--discard-unreadable"});
        const std::string list = done({"list"});
        EXPECT_THAT(list, AllOf(HasSubstr("cluster\t\t/c.pub"), HasSubstr(kept))) << content;
        EXPECT_EQ(support::read_file(previous()), content);
        support::remove_all(previous());
    }
    support::write_file(file(), "hello");
    refused(1, {"list"}, "cannot be read to its end");
    refused(1, {"get", "cluster"}, "cannot be read to its end");
}

TEST_F(Changes, EntriesThatTheFileWouldNotKeepStopTheChange) {
    for (const std::string& content :
         {document("<Z><PublicKeyPath>a&amp;b</PublicKeyPath></Z>"),
          document("<Notifier Name='S'><Z><PublicKeyPath>a&lt;b</PublicKeyPath></Z></Notifier>")}) {
        support::write_file(file(), content);
        refused(1, set_words("cluster", "/c"),
                "the former content is back: the file does not keep these entries as they are: Z");
        EXPECT_EQ(support::read_file(file()), content);
    }
}

TEST_F(Changes, TheFormerContentIsKeptAndComesBack) {
    refused(1, {"restore"}, "there is no former content to bring back: " + previous());
    done(set_words("cluster", "/one"));
    EXPECT_FALSE(std::filesystem::exists(previous())) << "there was nothing before";
    const std::string one = support::read_file(file());
    done(set_words("cluster", "/two"));
    EXPECT_EQ(support::read_file(previous()), one);
    const std::string two = support::read_file(file());
    support::write_file(file(), two.substr(0, 60)); // cut by a crash
    EXPECT_THAT(run({"check"}).output, HasSubstr("vdcertificates restore brings it back"));
    done({"restore"});
    EXPECT_EQ(support::read_file(file()), one);
    EXPECT_EQ(support::read_file(previous()), two.substr(0, 60));
    refused(1, {"restore"}, "would not come back");
    EXPECT_EQ(support::read_file(file()), one);
    support::write_file(file(), "");
    EXPECT_THAT(run({"check"}).output, HasSubstr("problem: " + file() + " is empty. The content"));
    support::write_file(file(), one);
    support::remove_all(previous());
    std::filesystem::create_directory(previous());
    refused(1, set_words("cluster", "/three"), previous());
    EXPECT_EQ(support::read_file(file()), one) << "changed without a copy";
    EXPECT_FALSE(std::filesystem::exists(previous() + ".new"));
}

TEST_F(Changes, HalfAPairOfKeysIsLeftAlone) {
    done(set_words("cluster", "/c") + Words{"--password-stdin"}, "geheim");
    for (const char* lost : key_files) {
        const std::string key = support::read_file(in_root(lost));
        support::remove_all(in_root(lost));
        for (const std::string content : {"", "not a key"}) {
            support::write_file(in_root(lost), content);
            for (const Words& command : {Words{"list"}, Words{"get", "cluster"},
                                         set_words("cluster", "/d"), Words{"restore"}}) {
                refused(1, command, in_root(lost));
            }
            const auto check = run({"check", "--format=json"});
            EXPECT_EQ(check.status, 1);
            EXPECT_EQ(Json::parse(check.output)[0]["code"],
                      content.empty() ? "key_file_missing" : "key_pair_unusable");
            const auto where = run({"where"});
            EXPECT_EQ(where.status, 1);
            EXPECT_THAT(where.output, HasSubstr("file: " + file() + "\n"));
            EXPECT_THAT(where.errors, HasSubstr(in_root(lost)));
            EXPECT_EQ(support::read_file(in_root(lost)), content);
        }
        support::write_file(in_root(lost), key);
    }
    EXPECT_THAT(done({"get", "cluster", "--show-password"}), HasSubstr("geheim"));

    remove_keys(); // and leave what a first use leaves that is killed
    support::write_file(in_root("_PrivateKey.bin"), "");
    EXPECT_THAT(run({"list"}).errors, HasSubstr("made a new pair of keys"));
}

TEST_F(Changes, NewKeysAreReportedAndHideOnlyPasswords) {
    done(set_words("cluster", "/c") + Words{"--password-stdin"}, "geheim");
    done(set_words("sip-device", "/d"));
    remove_keys();
    const auto list = run({"list", "--format=json", "--show-passwords"});
    EXPECT_EQ(list.status, 0);
    EXPECT_THAT(list.errors, HasSubstr("note: made a new pair of keys: " + in_root("_PublicKey")));
    EXPECT_THAT(list.errors, HasSubstr("warning: 1 password in " + file() + " cannot be"));
    EXPECT_THAT(run({"check"}).output,
                HasSubstr("problem: the entry cluster has a password that cannot be deciphered ("));
    EXPECT_EQ(Json::parse(list.output)[0]["password"], Json());
    EXPECT_EQ(Json::parse(list.output)[1]["password"], "");
    EXPECT_EQ(run({"get", "cluster"}).status, 0);
    refused(1, {"get", "cluster", "--field", "password", "--show-password"},
            "no readable password");
    refused(1, {"remove", "sip-device", "--server", "SRV01"}, "those of cluster would be lost");
    EXPECT_THAT(run({"export", "--password-stdin"}, "open sesame").errors,
                HasSubstr("warning: the password of the entry cluster cannot be deciphered and"));
}

// Nor does a password leave any trace in clear.
TEST_F(Changes, AnExportComesBackElsewhere) {
    platform::testing::set_environment_variable("QNTRACE", "81");
    platform::testing::set_environment_variable("QNTRACE_FILE", machine.file("trace.log"));
    const std::string out = machine.file("out");
    const Words password{"--password-stdin"};
    done(set_words("cluster", "/c") + password, "gehe\"im\xC3\xA4\n\n");
    done(set_words("sip-device", "/d") + Words{"--trusted", "/t"});
    const std::string before = done({"list", "--format=json", "--show-passwords"});
    done(Words{"export", "--output", out} + password, "open sesame\n");
    EXPECT_THAT(support::read_file(out), HasSubstr("smime-type=enveloped-data"));
    refused(1, Words{"import", out} + password, out + ": it cannot be deciphered", "wrong");
    remove_keys();
    support::remove_all(file());
    support::remove_all(previous());
    run({"list"}); // makes other keys
    EXPECT_EQ(done(Words{"import", out} + password, "open sesame"),
              "add cluster\nadd sip-device of the server 'SRV01'\n");
    EXPECT_EQ(done({"list", "--format=json", "--show-passwords"}), before);
    done({"update", "cluster", "--certificate", "/d"});
    for (const Words& command : {Words{"get", "cluster"}, Words{"list", "--format=json"},
                                 Words{"where"}, Words{"check"}}) {
        EXPECT_THAT(run(command).output, Not(HasSubstr("gehe")));
    }
    for (const auto& entry : std::filesystem::recursive_directory_iterator(machine.path())) {
        if (entry.is_regular_file()) {
            EXPECT_THAT(support::read_file(entry.path().string()), Not(HasSubstr("gehe")))
                << entry.path();
        }
    }
}

TEST_F(Changes, PlainJsonIsImportedOrRefusedAsAWhole) {
    const std::string path = machine.file("plain.json");
    const Words import{"import", path, "--plain"};
    const std::string paths = R"("public_key":"/p","private_key":"/k","certificate":"/c\u00e9")";
    const auto device = [&](const std::string& more) {
        return R"([{"role":"sip-device","server":"S",)" + paths + more + "}]";
    };
    const auto other = [&](const std::string& section) {
        return R"([{"role":"Other","section":")" + section + R"(",)" + paths + "}]";
    };
    const std::vector<std::tuple<std::string, int, std::string>> cases{
        // the file, the status, what is printed: changes or the refusal
        {device(R"(,"password":"one")"), 0, "add sip-device of the server 'S'\n"},
        {device(R"(,"password":"\u0074wo","trusted":null)"), 0,
         "change sip-device of the server 'S'\n"},
        {device(R"(,"password":null)"), 0, ""}, // null leaves it as it is
        {device(""), 0, ""},
        {R"({"role":"cluster",)" + paths + "}", 0, "add cluster\n"},
        {other("SIPDevices"), 0, "add Other\n"},
        {other("More"), 1, "entry 1: unknown section 'More'"},
        {"[{]", 1, path + ": it is no list of entries: byte 2 should be the name of a member"},
        {R"([{"role":"\ud800\u0041"}])", 1, "a character of Unicode"},
        {R"([{"role":"\ud83d\udd11"}])", 1, "unknown role '🔑'"},
        {R"([{"role":"sip-device",)" + paths + "}]", 1,
         "entry 1: the role sip-device needs a server"},
        {R"([{"role":"cluster","trusted":"/t",)" + paths + "}]", 1, "has no trusted certificate"},
        {device(R"(,"color":"red")"), 1, "entry 1: unknown member 'color'"},
        {device(R"(},{"role":"cluster")"), 1, "entry 2: public-key is empty"},
        {device(R"(,"password":")" + std::string(246, 'x') + "\""), 1, "longer than 245 bytes"},
    };
    for (const auto& [json, status, answer] : cases) {
        support::write_file(path, json);
        const std::string before = done({"list"});
        if (status == 0) {
            const std::string plan = done(import + Words{"--dry-run"});
            EXPECT_EQ(plan, answer.empty() ? "" : "would " + answer);
            EXPECT_EQ(done({"list"}), before) << json;
            support::remove_all(previous());
            EXPECT_EQ(done(import), answer) << json;
            EXPECT_EQ(std::filesystem::exists(previous()), !answer.empty() && !before.empty());
        } else {
            refused(status, import, answer);
            EXPECT_EQ(done({"list"}), before) << json;
        }
    }
    EXPECT_THAT(done({"list", "--show-passwords"}),
                HasSubstr("sip-device\tS\t/p\t/k\t/cé\t\ttwo\n"));
    EXPECT_THAT(done({"list", "--format=json"}), HasSubstr("\"section\": \"SIPDevices\"\n"));
}

} // namespace
} // namespace tools_test
