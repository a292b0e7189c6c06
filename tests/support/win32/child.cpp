#include "tests/support/win32/child.h"

#include <array>
#include <memory>

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
    std::array<HANDLE, 3> inherited{handles.input, handles.output, handles.error};
    SIZE_T size = 0;
    ::InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    const auto storage = std::make_unique<char[]>(size);
    auto* list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(storage.get());
    ::InitializeProcThreadAttributeList(list, 1, 0, &size);
    ::UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, inherited.data(),
                                sizeof inherited, nullptr, nullptr);
    STARTUPINFOEXW info = {};
    info.StartupInfo.cb = sizeof info;
    info.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    info.StartupInfo.hStdInput = handles.input;
    info.StartupInfo.hStdOutput = handles.output;
    info.StartupInfo.hStdError = handles.error;
    info.lpAttributeList = list;
    PROCESS_INFORMATION process = {};
    const BOOL started = ::CreateProcessW(nullptr, command_line.data(), nullptr, nullptr, TRUE,
                                          EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr,
                                          &info.StartupInfo, &process);
    ::DeleteProcThreadAttributeList(list);
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
