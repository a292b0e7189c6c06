#include "tests/support/win32/child.h"

#include "platform/win32/wide.h"

namespace support {
namespace {

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

HANDLE start(const std::vector<std::string>& words, const StandardHandles& handles) {
    std::wstring command_line;
    for (const std::string& word : words) {
        command_line += quoted(word) + L" ";
    }
    STARTUPINFOW info = {};
    info.cb = sizeof info;
    info.dwFlags = STARTF_USESTDHANDLES;
    info.hStdInput = handles.input;
    info.hStdOutput = handles.output;
    info.hStdError = handles.error;
    PROCESS_INFORMATION process = {};
    const BOOL started = ::CreateProcessW(nullptr, command_line.data(), nullptr, nullptr, TRUE, 0,
                                          nullptr, nullptr, &info, &process);
    if (!started) {
        return nullptr;
    }
    ::CloseHandle(process.hThread);
    return process.hProcess;
}

int exit_status_of(HANDLE process) {
    constexpr DWORD largest_own_status = 255;
    DWORD status = 0;
    ::WaitForSingleObject(process, INFINITE);
    ::GetExitCodeProcess(process, &status);
    ::CloseHandle(process);
    return status <= largest_own_status ? static_cast<int>(status) : -1;
}

} // namespace support
