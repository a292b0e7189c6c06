#include "tests/support/process.h"

#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/support/child_process.h"

namespace support {

struct ChildProcess::Process {
    pid_t id = -1;
    int input = -1;         ///< writes to the child's standard input
    FILE* output = nullptr; ///< reads the child's standard output
};

namespace {

[[noreturn]] void become_child(int input, int output, const std::string& function,
                               const std::vector<std::string>& arguments) {
    ::dup2(input, STDIN_FILENO);
    ::dup2(output, STDOUT_FILENO);
    std::vector<std::string> words{"test", child_argument, function};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(words.size() + 1);
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    ::execv("/proc/self/exe", pointers.data());
    ::_exit(127);
}

} // namespace

ChildProcess::ChildProcess(const std::string& function, const std::vector<std::string>& arguments)
    : process_(new Process) {
    int to_child[2];
    int from_child[2];
    if (::pipe2(to_child, O_CLOEXEC) != 0 || ::pipe2(from_child, O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return;
    }
    process_->id = ::fork();
    if (process_->id == 0) {
        become_child(to_child[0], from_child[1], function, arguments);
    }
    ::close(to_child[0]);
    ::close(from_child[1]);
    process_->input = to_child[1];
    process_->output = ::fdopen(from_child[0], "r");
}

ChildProcess::~ChildProcess() {
    if (process_->id > 0) {
        kill();
        wait();
    }
    ::close(process_->input);
    std::fclose(process_->output);
    delete process_;
}

std::string ChildProcess::next_line() {
    return read_line(process_->output);
}

void ChildProcess::tell() {
    EXPECT_EQ(::write(process_->input, "\n", 1), 1);
}

void ChildProcess::kill() {
    ::kill(process_->id, SIGKILL);
}

int ChildProcess::wait() {
    int status = 0;
    ::waitpid(process_->id, &status, 0);
    process_->id = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

} // namespace support
