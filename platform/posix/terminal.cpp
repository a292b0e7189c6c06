#include "platform/terminal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <termios.h>
#include <unistd.h>

#include "platform/memory.h"
#include "platform/posix/retry.h"

namespace platform {
namespace {

constexpr std::array signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP, SIGCONT};
constexpr std::size_t longest_line = 4096; ///< of a terminal

volatile std::sig_atomic_t g_signal = 0;
volatile std::sig_atomic_t g_waker = -1; ///< write end of the pipe that ends the wait for input

void note_signal(int number) {
    const int error = errno;
    if (number != SIGCONT || g_signal == 0) {
        g_signal = number;
    }
    [[maybe_unused]] const ssize_t ignored = ::write(g_waker, "", 1);
    errno = error;
}

void write_all(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written =
            retry([&] { return ::write(descriptor, text.data(), text.size()); });
        if (written < 0) {
            return; // the read will fail, too
        }
        text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace

bool output_is_terminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

bool error_is_terminal() {
    return ::isatty(STDERR_FILENO) == 1;
}

struct SecretPrompt::State {
    State()
        : descriptor(retry([] { return ::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC); })) {
        if (descriptor < 0 || ::tcgetattr(descriptor, &before) != 0 ||
            ::pipe2(wake.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
            return;
        }
        g_signal = 0;
        g_waker = wake[1];
        struct sigaction action = {};
        action.sa_handler = note_signal;
        for (std::size_t i = 0; i < signals.size(); ++i) {
            ::sigaction(signals[i], &action, &actions_before[i]);
        }
        changed = true;
        usable = silence();
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (changed) {
            ::tcsetattr(descriptor, TCSAFLUSH, &before);
            for (std::size_t i = 0; i < signals.size(); ++i) {
                ::sigaction(signals[i], &actions_before[i], nullptr);
            }
        }
        for (const int open : {descriptor, wake[0], wake[1]}) {
            if (open >= 0) {
                ::close(open);
            }
        }
        if (changed && g_signal != 0) {
            ::raise(g_signal);
        }
    }

    /// Discards what was typed with echo.
    bool silence() const {
        termios silent = before;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        return ::tcsetattr(descriptor, TCSAFLUSH, &silent) == 0;
    }

    /// Takes the signal's default action, a no-op if no shell could continue the process.
    void suspend() const {
        ::tcsetattr(descriptor, TCSAFLUSH, &before);
        struct sigaction own = {};
        struct sigaction usual = {};
        usual.sa_handler = SIG_DFL;
        ::sigaction(SIGTSTP, &usual, &own);
        ::raise(SIGTSTP);
        ::sigaction(SIGTSTP, &own, nullptr);
    }

    /// Handles a signal that was noted. Returns false if it ends the process.
    bool resume(const std::string& prompt) const {
        const int number = g_signal;
        if (number == 0) { // handled before
            return true;
        }
        if (number != SIGTSTP && number != SIGCONT) {
            return false;
        }
        g_signal = 0;
        if (number == SIGTSTP) {
            suspend();
            g_signal = g_signal == SIGCONT ? 0 : g_signal;
        }
        if (!silence()) {
            return false;
        }
        write_all(descriptor, prompt);
        return true;
    }

    /// Waits for input. Returns false after an ending signal, at whatever time and in any thread.
    bool wait(const std::string& prompt) const {
        for (;;) {
            std::array<pollfd, 2> sources{{{descriptor, POLLIN, 0}, {wake[0], POLLIN, 0}}};
            if (::poll(sources.data(), sources.size(), -1) < 0 && errno != EINTR) {
                return false;
            }
            if (sources[1].revents != 0) {
                std::array<char, 16> ignored{};
                while (::read(wake[0], ignored.data(), ignored.size()) > 0) {
                }
                if (!resume(prompt)) {
                    return false;
                }
            } else if (sources[0].revents != 0) {
                return true;
            }
        }
    }

    int descriptor;
    std::array<int, 2> wake{-1, -1};
    bool usable = false;
    bool changed = false;
    termios before = {};
    std::array<struct sigaction, signals.size()> actions_before = {};
};

SecretPrompt::SecretPrompt()
    : state_(std::make_unique<State>()) {
    if (!state_->usable) {
        state_.reset();
    }
}

SecretPrompt::~SecretPrompt() = default;

std::optional<std::string> SecretPrompt::ask(const std::string& prompt) {
    std::optional<std::string> secret(std::in_place);
    secret->reserve(longest_line); // growth would leave the text in freed memory
    write_all(state_->descriptor, prompt);
    for (;;) {
        char character = 0;
        const bool has_ended =
            !state_->wait(prompt) ||
            retry([&] { return ::read(state_->descriptor, &character, 1); }) != 1;
        if (has_ended || character == '\n') {
            write_all(state_->descriptor, "\n"); // the typed one was not echoed
        }
        if (has_ended) {
            secure_zero(secret->data(), secret->size());
            return std::nullopt;
        }
        if (character == '\n') {
            return secret;
        }
        *secret += character;
        secure_zero(&character, 1);
    }
}

} // namespace platform
