#include "platform/program.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#include "platform/posix/retry.h"

namespace platform {
namespace {

constexpr std::array holdable{SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGTSTP, SIGALRM};

/// Opens /dev/null in place of a closed stream, in the direction that the stream does not use.
void occupy(int stream, int mode) {
    if (::fcntl(stream, F_GETFD) != -1 || errno != EBADF) {
        return;
    }
    const int descriptor = retry([&] { return ::open("/dev/null", mode); }); // the lowest free one
    if (descriptor >= 0 && descriptor != stream) {
        ::dup2(descriptor, stream);
        ::close(descriptor);
    }
}

} // namespace

std::vector<std::string> program_arguments(int count, char** words) {
    return {words + (count > 0 ? 1 : 0), words + count};
}

void prepare_standard_streams() {
    occupy(STDIN_FILENO, O_WRONLY);
    occupy(STDOUT_FILENO, O_RDONLY);
    occupy(STDERR_FILENO, O_RDONLY);
    std::signal(SIGXFSZ, SIG_IGN);
}

SignalsHeld::SignalsHeld() noexcept {
    sigset_t wanted;
    sigset_t before;
    sigemptyset(&wanted);
    for (const int number : holdable) {
        sigaddset(&wanted, number);
    }
    ::pthread_sigmask(SIG_BLOCK, &wanted, &before);
    for (std::size_t i = 0; i < holdable.size(); ++i) {
        held_ |= sigismember(&before, holdable[i]) == 0 ? 1U << i : 0U;
    }
}

SignalsHeld::~SignalsHeld() {
    sigset_t released;
    sigemptyset(&released);
    for (std::size_t i = 0; i < holdable.size(); ++i) {
        if ((held_ & 1U << i) != 0) {
            sigaddset(&released, holdable[i]);
        }
    }
    ::pthread_sigmask(SIG_UNBLOCK, &released, nullptr);
}

} // namespace platform
