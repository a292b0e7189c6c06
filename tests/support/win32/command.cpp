#include "tests/support/command.h"

#include <memory>

#include <gtest/gtest.h>

#include "platform/win32/wide.h"
#include "tests/support/environment_guard.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/win32/child.h"

namespace support {
namespace {

HANDLE open_stream(const std::string& name, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inheritable{sizeof inheritable, nullptr, TRUE};
    return ::CreateFileW(platform::wide(name).c_str(), access,
                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inheritable,
                         disposition, FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

CommandResult run(const Command& command) {
    const TemporaryDirectory streams; // files, so that neither side ever waits for the other
    write_file(streams.file("in"), command.input);
    // The child takes its variables from this process.
    std::vector<std::unique_ptr<EnvironmentGuard>> variables;
    for (const auto& [name, value] : command.environment) {
        variables.push_back(std::make_unique<EnvironmentGuard>(name, value));
    }
    std::vector<std::string> words{command.program};
    words.insert(words.end(), command.arguments.begin(), command.arguments.end());
    const StandardHandles handles{open_stream(streams.file("in"), GENERIC_READ, OPEN_EXISTING),
                                  open_stream(streams.file("out"), GENERIC_WRITE, CREATE_NEW),
                                  open_stream(streams.file("err"), GENERIC_WRITE, CREATE_NEW)};
    const HANDLE process = start(words, handles);
    EXPECT_NE(process, nullptr) << command.program << ": " << ::GetLastError();
    for (const HANDLE handle : {handles.input, handles.output, handles.error}) {
        ::CloseHandle(handle);
    }
    const int status = process != nullptr ? exit_status_of(process) : -1;
    return {status, read_file(streams.file("out")), read_file(streams.file("err"))};
}

} // namespace support
