#include "platform/terminal.h"

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "tests/support/child_process.h"

namespace platform {
namespace {

/// A child that asks for a secret on a terminal whose other end the test has.
CHILD_PROCESS(ask_secret) {
    std::signal(SIGINT, SIG_DFL); // a test runner in the background ignores it
    ::setsid();
    if (::open(arguments.at(0).c_str(), O_RDWR) < 0) { // now the controlling terminal
        return 1;
    }
    const auto secret = ask_secret("Password: ");
    support::say(secret ? "[" + *secret + "]" : "nothing");
    return 0;
}

class TerminalTest : public ::testing::Test {
  protected:
    TerminalTest() {
        EXPECT_EQ(::grantpt(master_), 0);
        EXPECT_EQ(::unlockpt(master_), 0);
        slave_name_ = ::ptsname(master_);
        slave_ = ::open(slave_name_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    }
    void TearDown() override {
        ::close(slave_);
        ::close(master_);
    }

    void read_until(const std::string& text) {
        char character = 0;
        while (shown_.find(text) == std::string::npos && ::read(master_, &character, 1) == 1) {
            shown_ += character;
        }
    }
    void type(const std::string& text) const {
        EXPECT_EQ(::write(master_, text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }
    bool echoes() const {
        termios settings = {};
        EXPECT_EQ(::tcgetattr(slave_, &settings), 0);
        return (settings.c_lflag & ECHO) != 0;
    }

    int master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    int slave_ = -1;
    std::string slave_name_;
    std::string shown_;
};

TEST_F(TerminalTest, TheSecretIsNotShown) {
    support::ChildProcess child("ask_secret", {slave_name_});
    read_until("Password: ");
    EXPECT_FALSE(echoes());
    type("gehe\x7Fim \xC3\xA4\n");
    EXPECT_EQ(child.next_line(), "[gehim \xC3\xA4]");
    EXPECT_EQ(child.wait(), 0);
    EXPECT_TRUE(echoes());
    read_until("\n");
    EXPECT_EQ(shown_, "Password: \r\n");
}

TEST_F(TerminalTest, TheEndOfTheInputGivesNothing) {
    support::ChildProcess child("ask_secret", {slave_name_});
    read_until("Password: ");
    type("\x04");
    EXPECT_EQ(child.next_line(), "nothing");
    EXPECT_EQ(child.wait(), 0);
    EXPECT_TRUE(echoes());
}

TEST_F(TerminalTest, AnInterruptRestoresTheEchoAndEndsTheProcess) {
    support::ChildProcess child("ask_secret", {slave_name_});
    read_until("Password: ");
    EXPECT_FALSE(echoes());
    type("part\x03");
    EXPECT_EQ(child.next_line(), "");
    EXPECT_EQ(child.wait(), -1);
    EXPECT_TRUE(echoes());
}

CHILD_PROCESS(ask_without_a_terminal) {
    ::setsid();
    return ask_secret("Password: ") ? 1 : 0;
}

TEST_F(TerminalTest, WithoutATerminalThereIsNothing) {
    support::ChildProcess child("ask_without_a_terminal", {});
    EXPECT_EQ(child.wait(), 0);
}

} // namespace
} // namespace platform
