#include <set>
#include <string_view>

#include "platform/file.h"
#include "platform/path.h"
#include "tests/tools/program_fixture.h"

namespace tools_test {
namespace {

class Usage : public ProgramTest {
  protected:
    /// Expects that one line, and no change.
    void expect_refused(const Words& words, const std::string& line,
                        const std::string& input = "") {
        const support::CommandResult result = run(words, input);
        SCOPED_TRACE(testing::PrintToString(words));
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_EQ(result.errors, "vdcertificates: " + line + "\n");
        EXPECT_FALSE(std::filesystem::exists(file()));
    }
};

const std::string role_list = "the roles are cluster, subsystems, subsystems-server, "
                              "subsystems-remote-client, remote-client, web-config, sip-device, "
                              "media-retrieval-server, media-retrieval-client";

TEST_F(Usage, WrongUsageGetsOneLine) {
    const Words cluster = set_words("cluster", "/c");
    const std::string known =
        "set, update, remove, get, list, where, check, restore, export, import "
        "and completion";
    const std::string no_such_file = platform::describe(platform::open_input("/no/such").error());
    const Words two_passwords{"--password-stdin", "--prompt"};
    const std::string exclude =
        "--password-stdin, --password-file, --prompt and --no-password exclude each other";
    const std::vector<std::pair<Words, std::string>> cases{
        {{}, "a command is missing: one of " + known + " (vdcertificates --help tells more)"},
        {{"lis"}, "unknown command 'lis': the commands are " + known},
        {{"--verbose"}, "unknown option '--verbose'"},
        {{"get"}, "ROLE is required"},
        {{"set"}, "ROLE is required"},
        {{"import"}, "FILE is required"},
        {{"completion"}, "SHELL is required"},
        {{"get", "a\nb"}, "unknown role 'a\\x0ab': " + role_list},
        {{"get", "sip-device"}, "the role sip-device needs --server"},
        {{"get", "sip-device", "--server="}, "--server is empty"},
        {{"get", "sip-device", "--server"}, "--server needs a value"},
        {{"get", "cluster", "--server", "S"},
         "the role cluster takes no --server: there is one for the machine"},
        {{"get", "cluster", "extra"}, "unexpected argument 'extra'"},
        {{"get", "cluster", "--", "--format"}, "unexpected argument '--format'"},
        {{"get", "cluster", "--form", "json"}, "unknown option '--form'"},
        {{"get", "cluster", "--format="}, "unknown format '': the formats are text and json"},
        {{"get", "cluster", "--format=json", "--format=json"}, "--format is given more than once"},
        {{"get", "cluster", "--show-password=yes"}, "--show-password takes no value"},
        {{"set", "cluster", "--public-key", "--private-key", "/k"},
         "--public-key needs a value, which cannot begin with --"},
        {cluster + Words{"--trusted", "/t"}, "the role cluster takes no --trusted"},
        {cluster + Words{"--password", "secret"},
         "unknown option '--password': a password is given by --prompt, --password-file or "
         "--password-stdin, since others can read arguments"},
        {{"get", "cluster", "--server=", "x"}, "unexpected argument 'x'"},
        {{"get", "++", "cluster"}, "unexpected argument 'cluster'"},
        {cluster + two_passwords, exclude},
        {cluster + Words{"--no-password", "--password-file", "/f"}, exclude},
        {cluster + Words{"--password-file", "/no/such"},
         "cannot read the file '/no/such': " + no_such_file},
        {{"get", "cluster", "--field", "name"}, "unknown field 'name'"},
        {{"get", "cluster", "--field", "password"}, "--field password needs --show-password"},
        {{"update", "cluster"}, "nothing to update: give at least one field or password option"},
        {{"remove", "cluster", "--all-roles"}, "ROLE and --all-roles exclude each other"},
        {{"check", "--days", "3"}, "--days needs --files"},
        {{"check", "--files", "--days", "3x"}, "--days needs a number from 0 to 36500"},
        {{"export"}, "one of --password-file, --password-stdin and --prompt is required"},
        {{"import", "/f", "--plain", "--prompt"}, "--plain takes no password"},
        {{"completion", "sh"}, "unknown shell 'sh': the shells are bash, zsh and fish"},
    };
    for (const auto& [words, line] : cases) {
        expect_refused(words, line);
    }
}

// What would break the file, or be read back as something else.
TEST_F(Usage, TextsThatTheFileCannotKeepAreRefused) {
    const std::string blank = "--server begins or ends with a blank";
    std::vector<std::tuple<const char*, const char*, const char*, std::string>> cases{
        // server, public key, trusted certificate, refusal
        {"a\"b", "/p", "", "--server holds the character \", which the file cannot keep"},
        {"S", "a&b", "", "--public-key holds the character &, which the file cannot keep"},
        {"S", "\x7F", "",
         "--public-key holds the control character \\x7f, which the file cannot keep"},
        {"\xC2\x9B", "/p", "",
         "--server holds the control character \\x9b, which the file cannot keep"},
        {"S", "/p", "\xE2\x80\xAE",
         "--trusted holds the control character \\u202e, which the file cannot keep"},
        {"S", "", "", "--public-key is empty"},
        {" S", "/p", "", blank},
        {"S ", "/p", "", blank},
    };
    if (!platform::names_are_utf8) { // else no argument can be anything but Unicode
        cases.emplace_back("S", "\xC3(", "", "--public-key is not valid UTF-8");
    }
    for (const auto& [server, path, trusted, line] : cases) {
        expect_refused({"set", "sip-device", "--server", server, "--public-key", path,
                        "--private-key", "/k", "--certificate", "/c", "--trusted", trusted},
                       line);
    }
}

TEST_F(Usage, PasswordsThatCannotBeStoredAreRefused) {
    const Words words = set_words("cluster", "/a") + Words{"--password-stdin"};
    const std::string subject = "the password on standard input ";
    expect_refused(words, subject + "is longer than 245 bytes", std::string(246, 'x'));
    expect_refused(words, subject + "holds a zero byte", std::string("a\0b", 3));
    expect_refused(words, subject + "is not valid UTF-8", "\xFF");
    for (const char* nothing : {"", "\n", "\r\n"}) { // as a failed program gives it to a pipe
        expect_refused(words, subject + "is empty; to store none use --no-password", nothing);
    }
}

/// The words of small letters and dashes after each `prefix` that such a word follows.
std::set<std::string> words_after(std::string_view prefix, const std::string& text) {
    std::set<std::string> words;
    for (std::size_t at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at)) {
        at += prefix.size();
        words.insert(
            text.substr(at, text.find_first_not_of("abcdefghijklmnopqrstuvwxyz-", at) - at));
    }
    words.erase("");
    return words;
}

TEST_F(Usage, HelpAndVersionAreAnswers) {
    EXPECT_EQ(done({"--version"}), "vdcertificates 1.0.0\n");
    std::set<std::string> commands = words_after("\n  ", done({"--help"}));
    EXPECT_EQ(commands.erase("vdcertificates"), 1U); // begins the example
    std::string options;
    for (const std::string& command : commands) {
        const std::string text = done({command, "--help"});
        EXPECT_THAT(text, testing::HasSubstr("Usage: vdcertificates " + command));
        EXPECT_THAT(text, testing::HasSubstr("Example:\n  vdcertificates " + command));
        options += text;
    }
    std::set<std::string> described = words_after("Fl -", support::read_file(MANUAL));
    EXPECT_EQ(described.erase("help") + described.erase("version"), 2U);
    EXPECT_EQ(words_after("\n  --", options), described);
}

} // namespace
} // namespace tools_test
