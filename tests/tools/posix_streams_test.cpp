#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

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
               const std::map<std::string, std::optional<std::string>>& environment)
        : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        EXPECT_EQ(::grantpt(master_), 0);
        EXPECT_EQ(::unlockpt(master_), 0);
        child_ = ::fork();
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
        ::setsid();
        const int slave = ::open(::ptsname(master_), O_RDWR);
        ::ioctl(slave, TIOCSCTTY, 0);
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
            ::dup2(slave, stream);
        }
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

    int master_;
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

TEST_F(Streams, TwoPastedLinesAnswerBothQuestions) {
    OnTerminal terminal(prompting, environment);
    terminal.expect("Password: ");
    terminal.type("geheim\ngeheim\n");
    EXPECT_THAT(terminal.finish(), Not(HasSubstr("geheim")));
    EXPECT_EQ(terminal.wait(), 0);
    EXPECT_EQ(stored_password(), "geheim\n");
}

TEST_F(Streams, AnswersThatAreNoneStoreNothing) {
    struct Case {
        const char* typed;
        const char* line;
        int status;
    };
    for (const Case& answer :
         {Case{"one\ntwo\n", "\r\nvdcertificates: the two passwords differ\r\n", 2},
          Case{"\x04", "\r\nvdcertificates: the input ended before a password was given\r\n", 2},
          Case{"\n\n", "\r\nvdcertificates: the password is empty", 2},
          Case{"a\x03", "Password: ", -SIGINT}}) {
        OnTerminal terminal(prompting, environment);
        terminal.expect("Password: ");
        terminal.type(answer.typed);
        EXPECT_THAT(terminal.finish(), HasSubstr(answer.line));
        EXPECT_EQ(terminal.wait(), answer.status);
        EXPECT_FALSE(std::filesystem::exists(file()));
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
        const auto result = support::run(
            {"/bin/sh",
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

TEST_F(Streams, KeyFilesThatOthersMayReadAreAProblem) {
    done(set_words("cluster", "/c"));
    std::filesystem::permissions(in_root("_PublicKey.bin"), std::filesystem::perms::others_read,
                                 std::filesystem::perm_options::add);
    const auto result = run({"check"});
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output, HasSubstr("problem: every account may use the key file " +
                                         in_root("_PublicKey.bin")));
}

} // namespace
} // namespace tools_test
