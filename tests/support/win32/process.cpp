#include "tests/support/process.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <io.h>

#include <gtest/gtest.h>

#include "platform/win32/wide.h"
#include "tests/support/child_process.h"
#include "tests/support/win32/child.h"

namespace support {

struct ChildProcess::Process {
    HANDLE handle = nullptr;
    HANDLE input = nullptr; ///< writes to the child's standard input
    FILE* output = nullptr; ///< reads the child's standard output
};

namespace {

struct Pipe {
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
};

Pipe make_pipe() {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    Pipe pipe;
    EXPECT_TRUE(::CreatePipe(&pipe.reader, &pipe.writer, &inheritable, 0));
    return pipe;
}

std::string own_program() {
    std::array<wchar_t, 4096> name{};
    const DWORD length = ::GetModuleFileNameW(nullptr, name.data(), name.size());
    return platform::narrow({name.data(), length});
}

} // namespace

ChildProcess::ChildProcess(const std::string& function, const std::vector<std::string>& arguments)
    : process_(new Process) {
    const Pipe to_child = make_pipe();
    const Pipe from_child = make_pipe();
    for (const HANDLE own : {to_child.writer, from_child.reader}) {
        ::SetHandleInformation(own, HANDLE_FLAG_INHERIT, 0);
    }
    std::vector<std::string> words{own_program(), child_argument, function};
    words.insert(words.end(), arguments.begin(), arguments.end());
    process_->handle =
        start(words, {to_child.reader, from_child.writer, ::GetStdHandle(STD_ERROR_HANDLE)});
    EXPECT_NE(process_->handle, nullptr) << "the child does not start: " << ::GetLastError();
    ::CloseHandle(to_child.reader);
    ::CloseHandle(from_child.writer);
    process_->input = to_child.writer;
    process_->output = ::_fdopen(
        ::_open_osfhandle(reinterpret_cast<std::intptr_t>(from_child.reader), _O_RDONLY), "rb");
}

ChildProcess::~ChildProcess() {
    if (process_->handle != nullptr) {
        kill();
        wait();
    }
    ::CloseHandle(process_->input);
    std::fclose(process_->output);
    delete process_;
}

std::string ChildProcess::next_line() {
    return read_line(process_->output);
}

void ChildProcess::tell() {
    DWORD done = 0;
    EXPECT_TRUE(::WriteFile(process_->input, "\n", 1, &done, nullptr));
}

void ChildProcess::kill() {
    ::TerminateProcess(process_->handle, killed_status);
}

int ChildProcess::wait() {
    const HANDLE handle = process_->handle;
    process_->handle = nullptr;
    return exit_status_of(handle);
}

} // namespace support
