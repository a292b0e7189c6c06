#include <nlohmann/json.hpp>

#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

using Json = nlohmann::json;
using testing::HasSubstr;

class Changes : public ProgramTest {
  protected:
    std::string previous() const { return file() + ".previous"; }

    static std::string document(const std::string& notifiers) {
        return "<ORVACertificates><Notifiers>" + notifiers + "</Notifiers></ORVACertificates>";
    }
};

TEST_F(Changes, WhatCannotBeReadIsNotDropped) {
    const std::string unreadable = "<Password>-----</Password>";
    struct Case {
        std::string content;
        std::string loss;
        std::string kept = {}; ///< what --discard-unreadable leaves beside the new entry
    };
    const std::vector<Case> cases{
        {"hello", "all that " + file() + " holds, which cannot be read to its end ([line 1"},
        {"<ORVACertificates><Notifiers><WebConfigCertificate/><a></b>",
         "all that follows the entry web-config in ", "web-config"},
        {"<other/>", "the document in " + file() + ", whose root element is 'other'"},
        {document("<WebConfigCertificate>" + unreadable + "</WebConfigCertificate><Z/>"),
         "those of web-config would be lost", "Z"},
        {document("<Z><Deep/></Z>"), "the element 'Deep' of the entry Z", "Z"},
        {"<ORVACertificates><More/></ORVACertificates>", "the element 'More' in the root element"},
    };
    for (const Case& broken : cases) {
        support::write_file(file(), broken.content);
        for (const Words& change : {set_words("cluster", "/c"), Words{"remove", "cluster"},
                                    Words{"update", "cluster", "--no-password"}}) {
            refused(1, change, broken.loss);
            refused(1, change, "--discard-unreadable");
        }
        EXPECT_EQ(support::read_file(file()), broken.content);
        EXPECT_FALSE(std::filesystem::exists(previous()));
        done(set_words("cluster", "/c") + Words{"--discard-unreadable"});
        EXPECT_THAT(done({"list"}), HasSubstr("cluster\t\t/c.pub"));
        EXPECT_THAT(done({"list"}), HasSubstr(broken.kept)) << broken.content;
        EXPECT_EQ(support::read_file(previous()), broken.content);
        support::remove_all(previous());
    }
}

TEST_F(Changes, EntriesThatTheFileWouldNotKeepStopTheChange) {
    for (const char* value : {"a&amp;b", "a&lt;b"}) {
        const std::string content =
            document(std::string("<Z><PublicKeyPath>") + value + "</PublicKeyPath></Z>");
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
}

TEST_F(Changes, HalfAPairOfKeysIsLeftAlone) {
    done(set_words("cluster", "/c") + Words{"--password-stdin"}, "geheim");
    const char* files[] = {"_PublicKey.bin", "_PrivateKey.bin"};
    for (const char* lost : files) {
        const std::string key = support::read_file(in_root(lost));
        const auto keep = [&](const std::string& code) {
            for (const Words& command : {Words{"list"}, Words{"get", "cluster"},
                                         set_words("cluster", "/d"), Words{"restore"}}) {
                refused(1, command, in_root(lost));
            }
            const auto check = run({"check", "--format=json"});
            EXPECT_EQ(check.status, 1);
            EXPECT_EQ(Json::parse(check.output)[0]["code"], code);
            const auto where = run({"where"});
            EXPECT_EQ(where.status, 1);
            EXPECT_THAT(where.output, HasSubstr("file: " + file() + "\n"));
            EXPECT_THAT(where.errors, HasSubstr(in_root(lost)));
        };
        support::remove_all(in_root(lost));
        keep("key_file_missing");
        EXPECT_FALSE(std::filesystem::exists(in_root(lost)));
        support::write_file(in_root(lost), "not a key");
        keep("key_pair_unusable");
        EXPECT_EQ(support::read_file(in_root(lost)), "not a key");
        support::write_file(in_root(lost), key);
    }
    EXPECT_THAT(done({"get", "cluster", "--show-password"}), HasSubstr("geheim"));

    for (const char* const name : files) { // as a first use leaves them that is killed
        support::remove_all(in_root(name));
    }
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
}

TEST_F(Changes, AnExportComesBackElsewhere) {
    const std::string out = machine.file("out");
    const Words password{"--password-stdin"};
    done(set_words("cluster", "/c") + password, "gehe\"im\xC3\xA4\n\n");
    done(set_words("sip-device", "/d") + Words{"--trusted", "/t"});
    const std::string before = done({"list", "--format=json", "--show-passwords"});
    done(Words{"export", "--output", out} + password, "open sesame\n");
    EXPECT_THAT(support::read_file(out), HasSubstr("smime-type=enveloped-data"));
    refused(1, Words{"import", out} + password, out + ": it cannot be deciphered", "wrong");

    const Words import = Words{"import", out} + password;
    EXPECT_EQ(done(import, "open sesame"), "") << "all is there";
    remove_keys();
    support::remove_all(file());
    support::remove_all(previous());
    run({"list"}); // makes other keys
    EXPECT_EQ(done(import + Words{"--dry-run"}, "open sesame"),
              "would add cluster\nwould add sip-device of the server 'SRV01'\n");
    EXPECT_FALSE(std::filesystem::exists(file()));
    EXPECT_EQ(done(import, "open sesame"), "add cluster\nadd sip-device of the server 'SRV01'\n");
    EXPECT_EQ(done({"list", "--format=json", "--show-passwords"}), before);
    const std::string content = support::read_file(file());
    EXPECT_EQ(done(import, "open sesame"), "");
    EXPECT_EQ(support::read_file(file()), content);
    EXPECT_FALSE(std::filesystem::exists(previous())) << "nothing was written";
}

TEST_F(Changes, PlainJsonIsImportedOrRefusedAsAWhole) {
    const std::string paths = R"("public_key":"/p","private_key":"/k","certificate":"/c\u00e9")";
    const auto device = [&](const std::string& more) {
        return R"([{"role":"sip-device","server":"S",)" + paths + more + "}]";
    };
    struct Case {
        std::string json;
        std::string answer; ///< on standard output, or the refusal
        int status = 1;
    };
    const std::vector<Case> cases{
        {device(R"(,"password":"one")"), "add sip-device of the server 'S'\n", 0},
        {device(R"(,"password":"\u0074wo","trusted":null)"),
         "change sip-device of the server 'S'\n", 0},
        {device(R"(,"password":null)"), "", 0}, // null leaves it as it is
        {device(""), "", 0},
        {R"({"role":"cluster",)" + paths + "}", "add cluster\n", 0},
        {"[{]", "byte 2 should be the name of a member"},
        {R"([{"role":"\ud800\u0041"}])", "a character of Unicode"},
        {R"([{"role":"\ud83d\udd11"}])", "unknown role '🔑'"},
        {R"([{"role":"sip-device",)" + paths + "}]", "entry 1: the role sip-device needs a server"},
        {R"([{"role":"cluster","trusted":"/t",)" + paths + "}]", "has no trusted certificate"},
        {device(R"(,"color":"red")"), "entry 1: unknown member 'color'"},
        {device(R"(},{"role":"cluster")"), "entry 2: public-key is empty"},
        {device(R"(,"password":")" + std::string(246, 'x') + "\""), "longer than 245 bytes"},
    };
    const std::string path = machine.file("plain.json");
    for (const Case& plain : cases) {
        support::write_file(path, plain.json);
        const std::string before = run({"list"}).output;
        if (plain.status == 0) {
            EXPECT_EQ(done({"import", path, "--plain"}), plain.answer) << plain.json;
        } else {
            refused(1, {"import", path, "--plain"}, path + ": ");
            refused(1, {"import", path, "--plain"}, plain.answer);
            EXPECT_EQ(run({"list"}).output, before) << plain.json;
        }
    }
    EXPECT_THAT(done({"list", "--show-passwords"}),
                HasSubstr("sip-device\tS\t/p\t/k\t/cé\t\ttwo\n"));
}

} // namespace
} // namespace tools_test
