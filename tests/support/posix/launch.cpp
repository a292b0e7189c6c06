#include "tests/support/child_process.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

namespace support {
namespace {

int descriptor(FileHandle handle) {
    return static_cast<int>(handle);
}

} // namespace

FileHandle start(std::vector<std::string> words, const Streams& streams) {
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    const pid_t child = ::fork();
    EXPECT_GE(child, 0) << "fork: errno " << errno;
    if (child == 0) {
        ::dup2(descriptor(streams.input), STDIN_FILENO);
        ::dup2(descriptor(streams.output), STDOUT_FILENO);
        ::dup2(descriptor(streams.error), STDERR_FILENO); // a no-op for an invalid one
        ::execv(pointers[0], pointers.data());
        ::_exit(127);
    }
    return child;
}

void kill_process(FileHandle process) {
    ::kill(static_cast<pid_t>(process), SIGKILL);
}

int wait_for_process(FileHandle process) {
    int status = -1;
    if (process == platform::invalid_file) {
        return -1;
    }
    EXPECT_EQ(::waitpid(static_cast<pid_t>(process), &status, 0), process);
    EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 127) << "the program did not start";
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

Pipe make_pipe() {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe2(ends, O_CLOEXEC), 0) << "errno " << errno;
    return {ends[0], ends[1]};
}

bool may_change_account() {
    return ::geteuid() == 0 && ::getpwnam("nobody") != nullptr;
}

bool become_nobody() {
    const passwd* account = ::getpwnam("nobody");
    return account != nullptr && ::setgroups(0, nullptr) == 0 && ::setgid(account->pw_gid) == 0 &&
           ::setuid(account->pw_uid) == 0;
}

} // namespace support
