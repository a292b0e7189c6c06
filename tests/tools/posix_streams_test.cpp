#include <array>
#include <csignal>
#include <cstdlib>
#include <poll.h>
#include <pty.h>
#include <sys/stat.h>
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
    OnTerminal(const Words& arguments,
               const std::map<std::string, std::optional<std::string>>& environment) {
        child_ = ::forkpty(&master_, nullptr, nullptr, nullptr);
        if (child_ == 0) {
            become(arguments, environment);
        }
    }
    OnTerminal(const OnTerminal&) = delete;
    OnTerminal& operator=(const OnTerminal&) = delete;
    ~OnTerminal() {
        if (child_ > 0) {
            ::kill(child_, SIGKILL);
            wait();
        }
        ::close(master_);
    }

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
        ::kill(child_, SIGSTOP);
        int status = 0;
        ::waitpid(child_, &status, WUNTRACED);
        termios mode = {};
        EXPECT_EQ(::tcgetattr(master_, &mode), 0);
        mode.c_lflag |= ECHO;
        EXPECT_EQ(::tcsetattr(master_, TCSANOW, &mode), 0);
        ::kill(child_, SIGCONT);
    }
    /// All that came to the terminal.
    const std::string& finish() {
        while (read_more()) {
        }
        return text_;
    }
    /// The exit status, or the signal below zero.
    int wait() {
        int status = 0;
        ::waitpid(child_, &status, 0);
        child_ = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    }

  private:
    [[noreturn]] void become(const Words& arguments,
                             const std::map<std::string, std::optional<std::string>>& environment) {
        for (const auto& [name, value] : environment) {
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
        }
        std::vector<std::string> words = Words{program_file()} + arguments;
        std::vector<char*> pointers;
        pointers.reserve(words.size() + 1);
        for (std::string& word : words) {
            pointers.push_back(word.data());
        }
        pointers.push_back(nullptr);
        ::execv(pointers.front(), pointers.data());
        ::_exit(127);
    }

    /// False at the end, or when nothing comes for long.
    bool read_more() {
        pollfd ready{master_, POLLIN, 0};
        std::array<char, 512> bytes{};
        if (::poll(&ready, 1, 60'000) != 1) {
            ADD_FAILURE() << "nothing comes any more after: " << text_;
            ::kill(child_, SIGKILL);
            return false;
        }
        const ssize_t count = ::read(master_, bytes.data(), bytes.size());
        text_.append(bytes.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        return count > 0;
    }

    int master_ = -1;
    pid_t child_ = -1;
    std::string text_;
    std::size_t seen_ = 0;
};

class Streams : public ProgramTest {
  protected:
    const Words prompting = set_words("cluster", "/c") + Words{"--prompt"};

    std::string stored_password() {
        return done({"get", "cluster", "--show-password", "--field", "password"});
    }
};

TEST_F(Streams, ThePromptAsksTwiceWithoutEcho) {
    OnTerminal terminal(prompting, environment);
    terminal.expect("Password: ");
    terminal.type("geheim\n");
    terminal.expect("Password again: ");
    terminal.stop_and_continue(); // by a shell, which brings the echo back
    terminal.expect("Password again: ");
    terminal.type("\x1a"); // no shell to come back from: asks anew
    terminal.expect("Password again: ");
    terminal.type("geheim\n");
    EXPECT_THAT(terminal.finish(), Not(HasSubstr("geheim")));
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_EQ(stored_password(), "geheim\n");
}

TEST_F(Streams, TypedAnswersAreStoredOrRefused) {
    struct Case {
        const char* typed;
        const char* line;
        int status;
    };
    for (const Case& answer :
         {Case{"one\ntwo\n", "\r\nvdcertificates: the two passwords differ\r\n", 2},
          Case{"\x04", "\r\nvdcertificates: the input ended before a password was given\r\n", 2},
          Case{"\n\n", "\r\nvdcertificates: the password is empty", 2},
          Case{"a\x03", "Password: ", -SIGINT}, Case{"pasted\npasted\n", "again: ", 0}}) {
        OnTerminal terminal(prompting, environment);
        terminal.expect("Password: ");
        terminal.type(answer.typed);
        EXPECT_THAT(terminal.finish(),
                    testing::AllOf(HasSubstr(answer.line), Not(HasSubstr("pasted"))));
        EXPECT_EQ(terminal.wait(), answer.status);
        EXPECT_EQ(std::filesystem::exists(file()), answer.status == 0);
    }
}

TEST_F(Streams, ATerminalGetsColumns) {
    done(set_words("cluster", "/é"));
    OnTerminal table({"list"}, environment);
    EXPECT_EQ(table.finish(), "ROLE     SERVER  PUBLIC KEY  PRIVATE KEY  CERTIFICATE  TRUSTED\r\n"
                              "cluster          /é.pub      /é.key       /é.crt       \r\n");
    OnTerminal entry({"get", "cluster"}, environment);
    EXPECT_THAT(entry.finish(), HasSubstr("role         cluster\r\npublic_key   /é.pub\r\n"));
}

TEST_F(Streams, ALongReadingShowsItsProgress) {
    done(set_words("sip-device", "/d") + Words{"--password-stdin"}, "geheim");
    std::string text = support::read_file(file());
    const std::size_t begin = text.find("<Notifier ");
    const std::string entry = text.substr(begin, text.find("</SIPDevices>") - begin);
    std::string many;
    for (int i = 0; i < 50'000; ++i) { // more than half a second of reading
        many += entry;
    }
    text.insert(begin, many);
    support::write_file(file(), text);
    OnTerminal terminal({"get", "cluster"}, environment);
    terminal.expect(" entries read\r\x1b[K");
    EXPECT_THAT(terminal.finish(), testing::EndsWith("there is no entry of the role cluster\r\n"));
}

TEST_F(Streams, OutputThatCannotBeWrittenIsAFailure) {
    done(set_words("cluster", "/c") + Words{"--password-stdin"}, "geheim");
    struct Case {
        const char* redirection;
        int status;
    };
    environment["QNTRACE"] = "41"; // whose file must not become the standard output
    environment["QNTRACE_FILE"] = machine.file("trace");
    for (const Case& closed : {Case{"get cluster --show-password >/dev/full", 1},
                               Case{"get cluster --show-password >&-", 1}, Case{"--help >&-", 1},
                               Case{"list --show-passwords >&- 2>&- <&-", 1},
                               Case{"set cluster --public-key /p --private-key /k --certificate /c "
                                    "--password-stdin <&-",
                                    2}}) {
        const auto result =
            support::run({"/bin/sh",
                          {"-c", "exec \"$0\" " + std::string(closed.redirection), program_file()},
                          environment,
                          ""});
        EXPECT_EQ(result.status, closed.status) << closed.redirection;
    }
    EXPECT_THAT(support::read_file(machine.file("trace")), Not(HasSubstr("geheim")));
}

TEST_F(Streams, APasswordFileMayBeAPipe) {
    Words words{"-c", "exec \"$0\" \"$@\" --password-file <(echo geheim)", program_file()};
    words = words + set_words("cluster", "/c");
    EXPECT_EQ(support::run({"/bin/bash", words, environment, ""}).status, 0);
    EXPECT_EQ(stored_password(), "geheim\n");
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
    const std::string script = "repeat() { for i in 1 2 3 4 5 6 7 8; do \"$@\"; done; }; "
                               "\"$0\" \"$@\"; repeat \"$0\" \"$@\" & repeat \"$0\" check; wait";
    const Words words = Words{"-c", script, program_file()} + set_words("cluster", "/c");
    const auto result = support::run({"/bin/sh", words, environment, ""});
    EXPECT_EQ(result.errors, "");
    EXPECT_THAT(result.output,
                testing::AllOf(HasSubstr("holds 1 entry"), Not(HasSubstr("problem"))));
}

TEST_F(Streams, AFileThatMayNotBeReadIsKeptBesideTheNewOne) {
    done(set_words("cluster", "/c"));
    const std::string before = support::read_file(file());
    std::filesystem::permissions(file(), std::filesystem::perms::owner_write);
    const auto without_privileges = [&](const Words& words) {
        const std::string script = "[ $(id -u) = 0 ] && exec setpriv --inh-caps=-all "
                                   "--bounding-set=-all \"$0\" \"$@\"; exec \"$0\" \"$@\"";
        return support::run(
            {"/bin/sh", Words{"-c", script, program_file()} + words, environment, ""});
    };
    const auto refusal = without_privileges(set_words("cluster", "/d"));
    EXPECT_EQ(refusal.status, 1);
    EXPECT_THAT(refusal.errors, HasSubstr(file() + " cannot be opened: "));
    const auto change =
        without_privileges(set_words("cluster", "/d") + Words{"--discard-unreadable"});
    EXPECT_EQ(change.status, 0) << change.errors;
    EXPECT_EQ(support::read_file(file() + ".previous"), before);
    EXPECT_THAT(done({"list"}), HasSubstr("cluster\t\t/d.pub"));
}

/// Files as openssl makes them: an authority (ca), a certificate that it signed (s), whose key has
/// the password "geheim", and a stranger's (o).
class Files : public ProgramTest {
  protected:
    Files() {
        shell(
            "openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.crt -days 300 "
            "-subj /CN=ca && openssl genrsa -aes256 -passout pass:geheim -out s.key 2048 && "
            "openssl rsa -in s.key -passin pass:geheim -pubout -out s.pub && "
            "openssl req -new -key s.key -passin pass:geheim -subj /CN=s -out s.csr && "
            "openssl x509 -req -in s.csr -CA ca.crt -CAkey ca.key -days 20 -out s.crt "
            "-set_serial 5 && openssl x509 -in s.crt -outform DER -out s.der && "
            "openssl req -x509 -newkey rsa:2048 -nodes -keyout o.key -out o.crt -days 300 "
            "-subj /CN=o && openssl rsa -in o.key -pubout -out o.pub && : >db && echo 07 >serial "
            "&& printf '[ca]\ndefault_ca=d\n[d]\ndatabase=db\nserial=serial\nnew_certs_dir=.\n"
            "unique_subject=no\ndefault_md=sha256\npolicy=p\n[p]\ncommonName=supplied\n' >cnf && "
            "for year in 2000 2040; do openssl ca -config cnf -batch -cert ca.crt -keyfile ca.key "
            "-in s.csr -startdate ${year}0101000000Z -enddate ${year}0201000000Z -notext "
            "-out $year.crt || exit 1; done; chmod 600 *");
    }

    std::string shell(const std::string& script) {
        const auto result =
            support::run({"/bin/sh",
                          {"-c", "cd \"$0\" && exec 2>&1 && " + script, machine.file("home")},
                          environment,
                          ""});
        EXPECT_EQ(result.status, 0) << result.output;
        return result.output;
    }

    std::string home(const std::string& name) const { return machine.file("home/" + name); }
};

TEST_F(Files, TheirFaultsAreReported) {
    done({"set", "sip-device", "--server", "S", "--public-key", home("s.pub"), "--private-key",
          home("s.key"), "--certificate", home("s.crt"), "--trusted", home("ca.crt"),
          "--password-stdin"},
         "geheim");
    struct Case {
        Words update;
        std::string finding; ///< empty when all is well
        const char* days = "10";
    };
    const std::vector<Case> cases{
        {{"--certificate", home("s.crt")}, ""},
        {{"--certificate", home("s.crt")}, "warning: certificate_expires\n", "30"},
        {{"--certificate", home("2000.crt")}, "problem: certificate_expired\n"},
        {{"--certificate", home("2040.crt")}, "problem: certificate_not_yet_valid\n"},
        {{"--certificate", home("s.der")}, ""},
        {{"--trusted", home("o.crt")}, "problem: certificate_not_trusted"},
        {{"--trusted", home("s.crt")}, ""}, // an end of the chain of its own
        {{"--public-key", home("o.pub")}, "problem: public_key_of_another"},
        {{"--public-key", home("s.crt")}, ""},
        {{"--public-key", home("s.key")}, "problem: public_key_unreadable"},
        {{"--public-key", home("no")}, "problem: named_file_missing"},
        {{"--public-key", machine.file("home")}, "problem: named_file_unreadable"},
        {{"--private-key", home("o.key")}, "problem: key_not_of_certificate"},
        {{"--no-password"}, "problem: private_key_unreadable"},
        {{"--certificate", home("s.key")}, "problem: certificate_unreadable"},
        {{"--public-key", "s.pub"}, "warning: path_relative"},
    };
    const Words update{"update", "sip-device", "--server", "S"};
    const std::string before = support::read_file(file());
    for (const Case& wrong : cases) {
        support::write_file(file(), before);
        run(update + wrong.update);
        const auto result = run({"check", "--files", "--days", wrong.days, "--format=json"});
        std::string found;
        for (const auto& finding : nlohmann::json::parse(result.output)) {
            if (finding["role"] == "sip-device") {
                found +=
                    std::string(finding["severity"]) + ": " + std::string(finding["code"]) + "\n";
            }
        }
        // Only a finding of dates is known to come alone: one key belongs to all certificates.
        EXPECT_THAT(found, wrong.finding.ends_with('\n')
                               ? testing::Matcher<std::string>(wrong.finding)
                               : HasSubstr(wrong.finding))
            << testing::PrintToString(wrong.update);
        EXPECT_EQ(found.empty(), wrong.finding.empty()) << found;
    }
    support::write_file(file(), before);
    shell("chmod o+w s.pub && chmod o+r s.key");
    const std::string open = run({"check", "--files"}).output;
    EXPECT_THAT(open, HasSubstr(home("s.pub") + ", which every account may change"));
    EXPECT_THAT(open, HasSubstr(home("s.key") + ", which every account may open"));
}

TEST_F(Files, OpensslReadsAnExport) {
    done(set_words("cluster", "/c") + Words{"--password-stdin"}, "geheim");
    const std::string json = done({"list", "--format=json", "--show-passwords"});
    done({"export", "--password-stdin", "--output", home("out")}, "sesame");
    EXPECT_EQ(std::filesystem::status(home("out")).permissions(), std::filesystem::perms(0600));
    const std::string shown = shell("openssl cms -decrypt -in out -pwri_password sesame");
    EXPECT_EQ(shown + "\n", json);
    for (const char* form : {"PEM", "DER"}) {
        support::write_file(home("plain"), json);
        shell(std::string("openssl cms -encrypt -binary -aes256 -in plain -pwri_password sesame "
                          "-out again -outform ") +
              form);
        EXPECT_EQ(done({"import", home("again"), "--password-stdin"}, "sesame"), "") << form;
    }
}

// As when another account of the group works on the file, or the disk is full.
TEST_F(Streams, AFailedWriteChangesNothing) {
    done(set_words("cluster", "/c"));
    std::filesystem::permissions(file(), std::filesystem::perms(0640));
    done(set_words("sip-device", "/d") + Words{"--trusted", "/" + std::string(3000, 't')});
    EXPECT_EQ(std::filesystem::status(file() + ".previous").permissions(),
              std::filesystem::perms(0640));
    const std::string before = support::read_file(file());
    const Words more = set_words("web-config", "/" + std::string(1000, 'x'));
    const Words limited = Words{"-c", "ulimit -f 6; exec \"$0\" \"$@\"", program_file()} + more;
    const auto result = support::run({"/bin/bash", limited, environment, ""});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.errors, HasSubstr("could not be changed, and the former content is back"));
    EXPECT_EQ(support::read_file(file()), before);
    EXPECT_EQ(std::filesystem::status(file()).permissions(), std::filesystem::perms(0640));
}

TEST_F(Streams, WithoutMemoryNothingChanges) {
    done(set_words("cluster", "/c"));
    const std::string before = support::read_file(file());
    for (const Words& words : {Words{"get", "cluster"}, set_words("cluster", "/d")}) {
        int status = 1;
        // What is made before main() has its memory.
        for (int number = 50; status != 0 && number < 10000; number += 3) {
            environment["ORVA_FAILING_ALLOCATION"] = std::to_string(number);
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
    std::filesystem::create_symlink(program_file(), machine.file("vdcertificates"));
    struct Case {
        const char* shell;
        const char* script;
        const char* answer;
    };
    const std::vector<Case> cases{
        {"bash",
         ". ./_vdcertificates; answer() { COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); "
         "_vdcertificates; echo \"${COMPREPLY[*]}\"; }; answer vdcertificates re; "
         "answer vdcertificates get web; answer vdcertificates get cluster --server S; "
         "answer vdcertificates list --format ''",
         "remove restore\nweb-config\nSRV\\$\\(touch\\ evil\\)\ntext json\n"},
        {"fish",
         "source _vdcertificates; for words in rem 'get web' 'get cluster --server S'; "
         "complete -C \"vdcertificates $words\"; end",
         "remove\tRemove an entry, or all entries of a server\nweb-config\nSRV$(touch evil)\n"},
        {"zsh", // which loads the script when the first word is completed
         "zmodload zsh/zpty; zpty z zsh -f -i; zpty -w z 'PS1=; fpath=($PWD $fpath); "
         "autoload -Uz compinit; compinit -D -u'; zpty -n -w z $'vdcertificates rem\\t'; "
         "zpty -r -m z all '*remove*' && echo found",
         "found\n"},
    };
    for (const Case& shell : cases) {
        support::write_file(machine.file("_vdcertificates"), done({"completion", shell.shell}));
        const std::string script =
            "cd \"$0\"; PATH=$0:$PATH; command -v $1 >/dev/null || exit 9; timeout 60 $1 -c \"$2\"";
        const auto result = support::run(
            {"/bin/sh", {"-c", script, machine.str(), shell.shell, shell.script}, environment, ""});
        EXPECT_EQ(result.output, result.status == 9 ? "" : shell.answer) << shell.shell;
    }
    EXPECT_FALSE(std::filesystem::exists(machine.file("evil")));
}

} // namespace
} // namespace tools_test
