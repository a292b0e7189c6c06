#include "tests/support/command.h"

#include <csignal>
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "tests/support/temporary_directory.h"

namespace support {
namespace {

[[noreturn]] void become(const Command& command, const TemporaryDirectory& streams) {
    ::dup2(::open(streams.file("in").c_str(), O_RDONLY), STDIN_FILENO);
    ::dup2(::open(streams.file("out").c_str(), O_WRONLY), STDOUT_FILENO);
    ::dup2(::open(streams.file("err").c_str(), O_WRONLY), STDERR_FILENO);
    ::close_range(STDERR_FILENO + 1, ~0U, 0);
    for (const auto& [name, value] : command.environment) {
        if (value) {
            ::setenv(name.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name.c_str());
        }
    }
    std::vector<std::string> words{command.program};
    words.insert(words.end(), command.arguments.begin(), command.arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words) {
        pointers.push_back(word.data());
    }
    pointers.push_back(nullptr);
    ::execv(command.program.c_str(), pointers.data());
    ::_exit(127);
}

} // namespace

CommandResult run(const Command& command) {
    const TemporaryDirectory streams; // files, so that neither side ever waits for the other
    write_file(streams.file("in"), command.input);
    write_file(streams.file("out"), "");
    write_file(streams.file("err"), "");
    const pid_t child = ::fork();
    if (child == 0) {
        become(command, streams);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_FALSE(WIFEXITED(status) && WEXITSTATUS(status) == 127) << command.program;
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, read_file(streams.file("out")),
            read_file(streams.file("err"))};
}

} // namespace support
