#include "platform/program.h"

#include <cstdio>
#include <fcntl.h>
#include <io.h>
#include <memory>

#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
// after windows.h
#include <shellapi.h>

namespace platform {

std::vector<std::string> program_arguments(int, char**) {
    int count = 0;
    const std::unique_ptr<wchar_t*, decltype(&::LocalFree)> words(
        ::CommandLineToArgvW(::GetCommandLineW(), &count), &::LocalFree);
    std::vector<std::string> arguments;
    for (int i = 1; i < count; ++i) {
        arguments.push_back(narrow(words.get()[i]));
    }
    return arguments;
}

void prepare_standard_streams() {
    for (std::FILE* stream : {stdin, stdout, stderr}) {
        ::_setmode(::_fileno(stream), _O_BINARY);
    }
    ::SetConsoleOutputCP(CP_UTF8);
}

SignalsHeld::SignalsHeld() noexcept
    : held_(::SetConsoleCtrlHandler(nullptr, TRUE) ? 1U : 0U) {}

SignalsHeld::~SignalsHeld() {
    if (held_ != 0) {
        ::SetConsoleCtrlHandler(nullptr, FALSE);
    }
}

} // namespace platform
