#include "platform/terminal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include "platform/memory.h"

namespace platform {
namespace {

constexpr std::array<int, 4> ending_signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

volatile std::sig_atomic_t g_signal = 0;
volatile std::sig_atomic_t g_waker = -1; ///< write end of the pipe that ends the wait for input

void note_signal(int number) {
    const int error = errno;
    g_signal = number;
    [[maybe_unused]] const ssize_t ignored = ::write(g_waker, "", 1);
    errno = error;
}

/// The controlling terminal without echo for a scope. A signal that would end the process waits
/// until the echo is back.
class SilentTerminal {
  public:
    SilentTerminal()
        : descriptor_(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (descriptor_ < 0 || ::tcgetattr(descriptor_, &before_) != 0 ||
            ::pipe2(wake_.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
            return;
        }
        g_signal = 0;
        g_waker = wake_[1];
        struct sigaction action = {};
        action.sa_handler = note_signal;
        for (std::size_t i = 0; i < ending_signals.size(); ++i) {
            ::sigaction(ending_signals[i], &action, &actions_before_[i]);
        }
        termios silent = before_;
        silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        silent.c_lflag |= ECHONL;
        usable_ = ::tcsetattr(descriptor_, TCSAFLUSH, &silent) == 0;
        changed_ = true;
    }
    SilentTerminal(const SilentTerminal&) = delete;
    SilentTerminal& operator=(const SilentTerminal&) = delete;
    ~SilentTerminal() {
        if (changed_) {
            ::tcsetattr(descriptor_, TCSAFLUSH, &before_);
            for (std::size_t i = 0; i < ending_signals.size(); ++i) {
                ::sigaction(ending_signals[i], &actions_before_[i], nullptr);
            }
        }
        for (const int descriptor : {descriptor_, wake_[0], wake_[1]}) {
            if (descriptor >= 0) {
                ::close(descriptor);
            }
        }
        if (changed_ && g_signal != 0) {
            ::raise(g_signal);
        }
    }

    bool usable() const noexcept { return usable_; }
    int descriptor() const noexcept { return descriptor_; }

    /// Waits for input. False when an ending signal came, whenever that was and in whatever thread.
    bool wait() const {
        std::array<pollfd, 2> sources{{{descriptor_, POLLIN, 0}, {wake_[0], POLLIN, 0}}};
        while (::poll(sources.data(), sources.size(), -1) < 0) {
            if (errno != EINTR) {
                return false;
            }
        }
        return sources[1].revents == 0;
    }

  private:
    int descriptor_;
    std::array<int, 2> wake_{-1, -1};
    bool usable_ = false;
    bool changed_ = false;
    termios before_ = {};
    std::array<struct sigaction, ending_signals.size()> actions_before_ = {};
};

bool write_all(int descriptor, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(descriptor, text.data() + done, text.size() - done);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
    return true;
}

} // namespace

bool output_is_terminal() {
    return ::isatty(STDOUT_FILENO) == 1;
}

std::optional<std::string> ask_secret(const std::string& prompt) {
    const SilentTerminal terminal;
    if (!terminal.usable() || !write_all(terminal.descriptor(), prompt)) {
        return std::nullopt;
    }
    std::string secret;
    secret.reserve(4096); // a terminal's line is no longer, so nothing is left behind by growth
    for (;;) {
        char character = 0;
        if (!terminal.wait() || ::read(terminal.descriptor(), &character, 1) != 1) {
            secure_zero(secret.data(), secret.size());
            return std::nullopt;
        }
        if (character == '\n') {
            return secret;
        }
        secret += character;
        secure_zero(&character, 1);
    }
}

} // namespace platform
