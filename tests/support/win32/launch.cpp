#include "tests/support/child_process.h"

#include <gtest/gtest.h>

#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace support {
namespace {

constexpr UINT killed_status = 0xDEAD;
constexpr DWORD largest_own_status = 255;

HANDLE handle_of(FileHandle handle) {
    return reinterpret_cast<HANDLE>(handle);
}

FileHandle file_of(HANDLE handle) {
    return reinterpret_cast<FileHandle>(handle);
}

HANDLE inheritable(FileHandle handle) {
    ::SetHandleInformation(handle_of(handle), HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
    return handle_of(handle);
}

/// One word as CommandLineToArgvW() takes it apart again.
std::wstring quoted(const std::string& word) {
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t unit : platform::wide(word)) {
        if (unit == L'"') {
            text.append(backslashes + 1, L'\\');
        }
        backslashes = unit == L'\\' ? backslashes + 1 : 0;
        text += unit;
    }
    return text.append(backslashes, L'\\') + L"\"";
}

} // namespace

FileHandle start(std::vector<std::string> words, const Streams& streams) {
    std::wstring command_line;
    for (const std::string& word : words) {
        command_line += quoted(word) + L" ";
    }
    STARTUPINFOW info = {};
    info.cb = sizeof info;
    info.dwFlags = STARTF_USESTDHANDLES;
    info.hStdInput = inheritable(streams.input);
    info.hStdOutput = inheritable(streams.output);
    info.hStdError = streams.error == platform::invalid_file ? ::GetStdHandle(STD_ERROR_HANDLE)
                                                             : inheritable(streams.error);
    PROCESS_INFORMATION process = {};
    if (!::CreateProcessW(nullptr, command_line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                          &info, &process)) {
        ADD_FAILURE() << words[0] << " does not start: " << ::GetLastError();
        return platform::invalid_file;
    }
    ::CloseHandle(process.hThread);
    return file_of(process.hProcess);
}

void kill_process(FileHandle process) {
    ::TerminateProcess(handle_of(process), killed_status);
}

int wait_for_process(FileHandle process) {
    if (process == platform::invalid_file) {
        return -1;
    }
    DWORD status = 0;
    ::WaitForSingleObject(handle_of(process), INFINITE);
    ::GetExitCodeProcess(handle_of(process), &status);
    ::CloseHandle(handle_of(process));
    return status <= largest_own_status ? static_cast<int>(status) : -1;
}

Pipe make_pipe() {
    HANDLE reader = nullptr;
    HANDLE writer = nullptr;
    EXPECT_TRUE(::CreatePipe(&reader, &writer, nullptr, 0));
    return {file_of(reader), file_of(writer)};
}

bool is_wine() {
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

} // namespace support
