#include "platform/terminal.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include "platform/memory.h"

namespace platform {
namespace {

constexpr std::array<int, 4> ending_signals{SIGINT, SIGTERM, SIGHUP, SIGQUIT};

volatile std::sig_atomic_t g_signal = 0;

void note_signal(int number) {
    g_signal = number;
}

/// The controlling terminal without echo for a scope. A signal that would end the process waits
/// until the echo is back.
class SilentTerminal {
  public:
    SilentTerminal()
        : descriptor_(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
        if (descriptor_ < 0 || ::tcgetattr(descriptor_, &before_) != 0) {
            return;
        }
        g_signal = 0;
        struct sigaction action = {};
        action.sa_handler = note_signal; // without SA_RESTART: the read ends
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
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
        if (changed_ && g_signal != 0) {
            ::raise(g_signal);
        }
    }

    bool usable() const noexcept { return usable_; }
    int descriptor() const noexcept { return descriptor_; }

  private:
    int descriptor_;
    bool usable_ = false;
    bool changed_ = false;
    termios before_ = {};
    std::array<struct sigaction, ending_signals.size()> actions_before_ = {};
};

bool write_all(int descriptor, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = ::write(descriptor, text.data() + done, text.size() - done);
        if (written < 0) {
            return false;
        }
        done += static_cast<std::size_t>(written);
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
        const ssize_t count = ::read(terminal.descriptor(), &character, 1);
        if (count < 0 && errno == EINTR && g_signal == 0) {
            continue; // a signal that ends nothing
        }
        if (count != 1) {
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
