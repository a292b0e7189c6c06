#include <array>
#include <csignal>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "tests/tools/program_fixture.h"

// What the program does on a terminal, and with what only a POSIX system has.
namespace tools_test {
namespace {

using testing::HasSubstr;
using testing::Not;

/// The program on a pseudo terminal of its own, which is its controlling one.
class OnTerminal {
  public:
    explicit OnTerminal(const Words& arguments) {
        int terminal = -1;
        EXPECT_EQ(::openpty(&master_, &terminal, nullptr, nullptr, nullptr), 0);
        child_ = support::start(Words{"/usr/bin/setsid", "--ctty", program_file()} + arguments,
                                {terminal, terminal, terminal});
        ::close(terminal);
    }
    OnTerminal(const OnTerminal&) = delete;
    OnTerminal& operator=(const OnTerminal&) = delete;
    ~OnTerminal() { ::close(master_); }

    void expect(const std::string& prompt) {
        while (text_.find(prompt, seen_) == std::string::npos) {
            ASSERT_TRUE(read_more()) << "no '" << prompt << "' in: " << text_;
        }
        seen_ = text_.find(prompt, seen_) + prompt.size();
    }
    void type(const std::string& text) {
        EXPECT_EQ(::write(master_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    void stop_and_continue() {
        const auto child = static_cast<pid_t>(child_);
        ::kill(child, SIGSTOP);
        EXPECT_EQ(::waitpid(child, nullptr, WUNTRACED), child);
        termios mode = {};
        EXPECT_EQ(::tcgetattr(master_, &mode), 0);
        mode.c_lflag |= ECHO;
        EXPECT_EQ(::tcsetattr(master_, TCSANOW, &mode), 0);
        ::kill(child, SIGCONT);
    }
    /// Returns the exit status, or -1 if a signal ended the program. Every test must call it.
    int finish() {
        while (read_more()) {
        }
        return support::wait_for_process(child_);
    }
    /// All that came to the terminal.
    const std::string& text() const { return text_; }

  private:
    /// False at the end, or if nothing comes for long.
    bool read_more() {
        pollfd ready{master_, POLLIN, 0};
        std::array<char, 512> bytes{};
        if (::poll(&ready, 1, 60'000) != 1) {
            ADD_FAILURE() << "nothing comes any more after: " << text_;
            support::kill_process(child_);
            return false;
        }
        const ssize_t count = ::read(master_, bytes.data(), bytes.size());
        text_.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return count > 0;
    }

    int master_ = -1;
    support::FileHandle child_ = platform::invalid_file;
    std::string text_;
    std::size_t seen_ = 0;
};

class Streams : public ProgramTest {
  protected:
    const Words prompting = set_words("cluster", "/c") + Words{"--prompt"};

    /// Runs a script in the user's profile, with the program as $0 and the words as its arguments.
    support::CommandResult shell(const std::string& script, const Words& words = {}) {
        return support::run(
            {"/bin/bash", Words{"-c", "cd \"$USERPROFILE\"; " + script, program_file()} + words});
    }

    std::string stored_password() {
        return done({"get", "cluster", "--show-password", "--field", "password"});
    }
};

TEST_F(Streams, ThePromptAsksTwiceWithoutEcho) {
    OnTerminal terminal(prompting);
    terminal.expect("Password: ");
    terminal.type("geheim\n");
    terminal.expect("Password again: ");
    terminal.stop_and_continue(); // by a shell, which brings the echo back
    terminal.expect("Password again: ");
    terminal.type("\x1a"); // no shell to come back from: asks again
    terminal.expect("Password again: ");
    terminal.type("geheim\n");
    EXPECT_EQ(terminal.finish(), 0);
    EXPECT_THAT(terminal.text(), Not(HasSubstr("geheim")));
    EXPECT_EQ(stored_password(), "geheim\n");
}

TEST_F(Streams, TypedAnswersAreStoredOrRefused) {
    const std::vector<std::tuple<const char*, const char*, int>> cases{
        // what is typed, what is printed then, the status
        {"one\ntwo\n", "\r\nvdcertificates: the two passwords differ\r\n", 2},
        {"\x04", "\r\nvdcertificates: the input ended before a password was given\r\n", 2},
        {"\n\n", "\r\nvdcertificates: the password is empty", 2},
        {"a\x03", "Password: ", -1},
        {"pasted\npasted\n", "again: ", 0},
    };
    for (const auto& [typed, line, status] : cases) {
        OnTerminal terminal(prompting);
        terminal.expect("Password: ");
        terminal.type(typed);
        EXPECT_EQ(terminal.finish(), status);
        EXPECT_THAT(terminal.text(), testing::AllOf(HasSubstr(line), Not(HasSubstr("pasted"))));
        EXPECT_EQ(std::filesystem::exists(file()), status == 0);
    }
}

TEST_F(Streams, ATerminalGetsColumns) {
    done(set_words("cluster", "/é"));
    OnTerminal table({"list"});
    EXPECT_EQ(table.finish(), 0);
    EXPECT_EQ(table.text(), "ROLE     SERVER  PUBLIC KEY  PRIVATE KEY  CERTIFICATE  TRUSTED\r\n"
                            "cluster          /é.pub      /é.key       /é.crt       \r\n");
    OnTerminal entry({"get", "cluster"});
    EXPECT_EQ(entry.finish(), 0);
    EXPECT_THAT(entry.text(), HasSubstr("role         cluster\r\npublic_key   /é.pub\r\n"));
}

TEST_F(Streams, ALongReadingShowsItsProgress) {
    done(set_words("sip-device", "/d") + Words{"--password-stdin"}, "geheim");
    std::string text = support::read_file(file());
    const std::size_t begin = text.find("<Notifier ");
    const std::string entry = text.substr(begin, text.find("</SIPDevices>") - begin);
    std::string many;
    for (int i = 0; i < 40'000; ++i) {
        many += entry;
    }
    std::string seen; // a fast machine reads them in half a second, and gets more
    for (int i = 0; i < 8 && seen.find(" entries read\r\x1b[K") == std::string::npos; ++i) {
        support::write_file(file(), text.insert(begin, many));
        OnTerminal terminal({"get", "cluster"});
        EXPECT_EQ(terminal.finish(), 3);
        seen = terminal.text();
    }
    EXPECT_THAT(seen, testing::HasSubstr(" entries read\r\x1b[K"));
    EXPECT_THAT(seen, testing::EndsWith("there is no entry of the role cluster\r\n"));
}

TEST_F(Streams, ABrokenStreamIsAFailureAndAPipeIsNot) {
    done(set_words("cluster", "/c") + Words{"--password-stdin"}, "geheim");
    // The trace's file must not become the standard output.
    platform::testing::set_environment_variable("QNTRACE", "41");
    platform::testing::set_environment_variable("QNTRACE_FILE", machine.file("trace"));
    const std::vector<std::pair<const char*, int>> cases{
        {"get cluster --show-password >/dev/full", 1},
        {"get cluster --show-password >&-", 1},
        {"--help >&-", 1},
        {"list --show-passwords >&- 2>&- <&-", 1},
        {"update cluster --password-stdin <&-", 2},
        {"update cluster --password-file <(echo geheim-2)", 0},
    };
    for (const auto& [command, status] : cases) {
        EXPECT_EQ(shell(std::string("exec \"$0\" ") + command).status, status) << command;
    }
    EXPECT_EQ(stored_password(), "geheim-2\n");
    EXPECT_THAT(support::read_file(machine.file("trace")), Not(HasSubstr("geheim")));
}

TEST_F(Streams, WhatCannotBeLookedAtOrIsOpenIsAProblem) {
    std::filesystem::create_symlink(file(), file());
    std::filesystem::permissions(in_root("_PublicKey.bin"), std::filesystem::perms::others_read,
                                 std::filesystem::perm_options::add);
    const auto check = run({"check"});
    EXPECT_EQ(check.status, 1);
    EXPECT_THAT(check.output, HasSubstr("problem: " + file() + " cannot be opened: "));
    EXPECT_THAT(check.output, HasSubstr("problem: every account may use the key file"));
    for (const char* format : {"text", "json"}) {
        const auto where = run({"where", "--format", format});
        EXPECT_EQ(where.status, 1);
        EXPECT_THAT(where.output, Not(HasSubstr("file_exists")));
        EXPECT_THAT(where.errors, HasSubstr("cannot look at " + file() + ": "));
    }
}

TEST_F(Streams, ACheckBesideChangesFindsNoFault) {
    const auto result = shell("repeat() { for i in 1 2 3 4 5 6 7 8; do \"$@\"; done; }; "
                              "\"$0\" \"$@\"; repeat \"$0\" \"$@\" & repeat \"$0\" check; wait",
                              set_words("cluster", "/c"));
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output,
                testing::AllOf(HasSubstr("holds 1 entry"), Not(HasSubstr("problem"))));
}

TEST_F(Streams, AFileThatMayNotBeReadIsKeptBesideTheNewOne) {
    done(set_words("cluster", "/c"));
    const std::string before = support::read_file(file());
    std::filesystem::permissions(file(), std::filesystem::perms::owner_write);
    const std::string without_privileges = "[ $(id -u) = 0 ] && exec setpriv --inh-caps=-all "
                                           "--bounding-set=-all \"$0\" \"$@\"; exec \"$0\" \"$@\"";
    const Words change = set_words("cluster", "/d");
    const auto refusal = shell(without_privileges, change);
    EXPECT_EQ(refusal.status, 1);
    EXPECT_THAT(refusal.errors, HasSubstr(file() + " cannot be opened: "));
    EXPECT_EQ(shell(without_privileges, change + Words{"--discard-unreadable"}).status, 0);
    EXPECT_EQ(support::read_file(previous()), before);
    EXPECT_THAT(done({"list"}), HasSubstr("cluster\t\t/d.pub"));
}

// As when another account of the group works on the file, or the disk is full.
TEST_F(Streams, AFailedWriteChangesNothing) {
    const auto fails = [&](const char* kilobytes) {
        const auto result =
            shell("ulimit -f $1; shift; exec \"$0\" \"$@\"",
                  Words{kilobytes} + set_words("web-config", "/" + std::string(999, 'x')));
        EXPECT_EQ(result.status, 1);
        EXPECT_THAT(result.errors, HasSubstr("not be changed, and the former content is back"));
    };
    fails("1");
    EXPECT_FALSE(std::filesystem::exists(file()));
    done(set_words("cluster", "/c"));
    std::filesystem::permissions(file(), std::filesystem::perms(0640));
    done(set_words("sip-device", "/d") + Words{"--trusted", "/" + std::string(3000, 't')});
    EXPECT_EQ(std::filesystem::status(previous()).permissions(), std::filesystem::perms(0640));
    const std::string before = support::read_file(file());
    fails("6");
    EXPECT_EQ(support::read_file(file()), before);
    EXPECT_EQ(std::filesystem::status(file()).permissions(), std::filesystem::perms(0640));
}

TEST_F(Streams, WithoutMemoryNothingChanges) {
    done(set_words("cluster", "/c"));
    const std::string before = support::read_file(file());
    for (const Words& words : {Words{"get", "cluster"}, set_words("cluster", "/d")}) {
        int status = 1;
        // What is made before main() has its memory.
        for (int number = 50; status != 0 && number < 10000; number += 5) {
            platform::testing::set_environment_variable("ORVA_FAILING_ALLOCATION",
                                                        std::to_string(number));
            const auto result = run(words);
            status = result.status;
            if (status != 0) {
                EXPECT_EQ(status, 1) << number;
                EXPECT_EQ(result.errors, "vdcertificates: out of memory\n") << number;
                EXPECT_EQ(support::read_file(file()), before) << number;
            }
        }
        EXPECT_EQ(status, 0) << words.front();
    }
}

TEST_F(Streams, CompletionKnowsServersAndRunsNoneOfThem) {
    done({"set", "sip-device", "--server", "SRV$(touch evil)", "--public-key", "/p",
          "--private-key", "/k", "--certificate", "/c"});
    const std::vector<std::tuple<const char*, const char*, const char*>> cases{
        // shell, script, answer
        {"bash",
         ". ./_vdcertificates; answer() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
         "_vdcertificates; echo \"${COMPREPLY[*]}\"; }; answer vdcertificates re; "
         "answer vdcertificates get web; answer vdcertificates get cluster --server S; "
         "answer vdcertificates list --format ''",
         "remove restore\nweb-config\nSRV\\$\\(touch\\ evil\\)\ntext json\n"},
        {"fish",
         "source _vdcertificates; for words in rem 'get web' 'completion z' "
         "'get cluster --server S'; complete -C \"vdcertificates $words\"; end",
         "remove\tRemove an entry, or all entries of a server\nweb-config\nzsh\n"
         "SRV$(touch evil)\n"},
        {"zsh", // which loads the script when the first word is completed
         "zmodload zsh/zpty; zpty z zsh -f -i; zpty -w z 'PS1=; fpath=($PWD $fpath); "
         "autoload -Uz compinit; compinit -D -u'; zpty -n -w z $'vdcertificates rem\\t'; "
         "zpty -r -m z all '*remove*' && echo found",
         "found\n"},
    };
    for (const auto& [name, script, answer] : cases) {
        support::write_file(machine.file("home/_vdcertificates"), done({"completion", name}));
        const auto result = shell("ln -sf $0 vdcertificates; PATH=$PWD:$PATH; "
                                  "command -v $1 >/dev/null || exit 9; timeout 60 $1 -c \"$2\"",
                                  {name, script});
        EXPECT_EQ(result.output, result.status == 9 ? "" : answer) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(machine.file("home/evil")));
}

/// Files as openssl makes them: an authority (ca), a certificate that it signed (s), whose key has
/// the password "geheim", and a stranger's (o).
constexpr const char* make_files =
    "req() { openssl req -x509 -newkey ec -pkeyopt ec_paramgen_curve:P-256 -nodes -keyout $1.key "
    "-out $1.crt -days 300 -subj /CN=$1; }; set -e; exec 2>&1; req ca; req o; "
    "openssl genpkey -algorithm rsa -aes256 -pass pass:geheim -out s.key; "
    "openssl rsa -in s.key -passin pass:geheim -pubout -out s.pub; "
    "openssl req -new -key s.key -passin pass:geheim -subj /CN=s -out s.csr; "
    "openssl x509 -req -in s.csr -CA ca.crt -CAkey ca.key -days 20 -out s.crt -set_serial 5; "
    "openssl x509 -in s.crt -outform DER -out s.der; : >db; echo 07 >serial; "
    "printf '[ca]\ndefault_ca=d\n[d]\ndatabase=db\nserial=serial\nnew_certs_dir=.\n"
    "unique_subject=no\ndefault_md=sha256\npolicy=p\n[p]\ncommonName=supplied\n' >cnf; "
    "for year in 2000 2040; do openssl ca -config cnf -batch -cert ca.crt -keyfile ca.key "
    "-in s.csr -startdate ${year}0101000000Z -enddate ${year}0201000000Z -notext "
    "-out $year.crt; done; chmod 600 *";

TEST_F(Streams, FaultsOfNamedFilesAreReported) {
    const auto made = shell(make_files);
    ASSERT_EQ(made.status, 0) << made.output;
    const auto home = [&](const std::string& name) { return machine.file("home/" + name); };
    done({"set", "sip-device", "--server", "S", "--public-key", home("s.pub"), "--private-key",
          home("s.key"), "--certificate", home("s.crt"), "--trusted", home("ca.crt"),
          "--password-stdin"},
         "geheim");
    const std::vector<std::tuple<Words, std::string, std::string>> cases{
        // what is updated, the days to look ahead, the finding; empty when all is well
        {{"--certificate", home("s.crt")}, "10", ""},
        {{"--certificate", home("s.crt")}, "30", "warning: certificate_expires\n"},
        {{"--certificate", home("2000.crt")}, "10", "problem: certificate_expired\n"},
        {{"--certificate", home("2040.crt")}, "10", "problem: certificate_not_yet_valid\n"},
        {{"--certificate", home("s.der")}, "10", ""},
        {{"--trusted", home("o.crt")}, "10", "problem: certificate_not_trusted"},
        {{"--trusted", home("s.crt")}, "10", ""}, // an end of the chain of its own
        {{"--public-key", home("o.crt")}, "10", "problem: public_key_of_another"},
        {{"--public-key", home("s.crt")}, "10", ""},
        {{"--public-key", home("s.key")}, "10", "problem: public_key_unreadable"},
        {{"--public-key", home("no")}, "10", "problem: named_file_missing"},
        {{"--public-key", machine.file("home")}, "10", "problem: named_file_unreadable"},
        {{"--private-key", home("o.key")}, "10", "problem: key_not_of_certificate"},
        {{"--no-password"}, "10", "problem: private_key_unreadable"},
        {{"--certificate", home("s.key")}, "10", "problem: certificate_unreadable"},
        {{"--public-key", "s.pub"}, "10", "warning: path_relative"},
    };
    const Words update{"update", "sip-device", "--server", "S"};
    const std::string before = support::read_file(file());
    for (const auto& [change, days, expected] : cases) {
        support::write_file(file(), before);
        run(update + change);
        const auto result = run({"check", "--files", "--days", days, "--format=json"});
        std::string found;
        for (const auto& finding : nlohmann::json::parse(result.output)) {
            if (finding["role"] == "sip-device") {
                found +=
                    std::string(finding["severity"]) + ": " + std::string(finding["code"]) + "\n";
            }
        }
        // Only a finding of dates is known to come alone: one key belongs to all certificates.
        EXPECT_EQ(expected.ends_with('\n') ? found : found.substr(0, expected.size()), expected)
            << testing::PrintToString(change);
        EXPECT_EQ(found.empty(), expected.empty()) << found;
    }
    support::write_file(file(), before);
    shell("chmod o+w s.pub; chmod o+r s.key");
    const std::string open = run({"check", "--files"}).output;
    EXPECT_THAT(open, HasSubstr(home("s.pub") + ", which every account may change"));
    EXPECT_THAT(open, HasSubstr(home("s.key") + ", which every account may open"));
}

TEST_F(Streams, OpensslReadsAnExportAndWritesOne) {
    done(set_words("cluster", "/c") + Words{"--password-stdin"}, "geheim");
    const std::string json = done({"list", "--format=json", "--show-passwords"});
    const std::string out = machine.file("home/out");
    done({"export", "--password-stdin", "--output", out}, "sesame");
    EXPECT_EQ(std::filesystem::status(out).permissions(), std::filesystem::perms(0600));
    const auto shown = shell("openssl cms -decrypt -in out -pwri_password sesame | tee plain");
    EXPECT_EQ(shown.output + "\n", json) << shown.errors;
    for (const char* form : {"PEM", "DER"}) {
        shell("openssl cms -encrypt -binary -aes256 -in plain -pwri_password sesame -out out "
              "-outform $1",
              {form});
        EXPECT_EQ(done({"import", out, "--password-stdin"}, "sesame"), "") << form;
    }
}

} // namespace
} // namespace tools_test
