#include "platform/terminal.h"

#include <array>
#include <string_view>

#include "platform/memory.h"
#include "platform/win32/handle.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr std::size_t longest_line = 4096;

bool is_console(DWORD stream) {
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(stream), &mode);
}

/// Opens the console's input or output, whatever the standard streams are.
HANDLE open_console(const wchar_t* name) {
    return ::CreateFileW(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                         nullptr, OPEN_EXISTING, 0, nullptr);
}

void write(const Handle& output, std::wstring_view text) {
    DWORD done = 0;
    ::WriteConsoleW(output.get(), text.data(), static_cast<DWORD>(text.size()), &done, nullptr);
}

/// The typed text in UTF-8, in memory that does not move.
std::string narrow_secret(std::wstring_view typed) {
    std::string text;
    text.reserve(longest_line * 3);
    text.resize(typed.size() * 3);
    const int bytes =
        ::WideCharToMultiByte(CP_UTF8, 0, typed.data(), static_cast<int>(typed.size()), text.data(),
                              static_cast<int>(text.size()), nullptr, nullptr);
    text.resize(static_cast<std::size_t>(bytes));
    return text;
}

} // namespace

bool output_is_terminal() {
    return is_console(STD_OUTPUT_HANDLE);
}

bool error_is_terminal() {
    return is_console(STD_ERROR_HANDLE);
}

/// Ctrl+C ends the read and then the process.
struct SecretPrompt::State {
    State()
        : usable(::GetConsoleMode(input.get(), &before) &&
                 ::SetConsoleMode(input.get(), ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT)) {}
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        if (usable) {
            ::SetConsoleMode(input.get(), before);
        }
    }

    Handle input{open_console(L"CONIN$")};
    Handle output{open_console(L"CONOUT$")};
    DWORD before = 0;
    bool usable;
};

SecretPrompt::SecretPrompt()
    : state_(std::make_unique<State>()) {
    if (!state_->usable) {
        state_.reset();
    }
}

SecretPrompt::~SecretPrompt() = default;

std::optional<std::string> SecretPrompt::ask(const std::string& prompt) {
    write(state_->output, wide(prompt));
    std::array<wchar_t, longest_line> line{};
    DWORD length = 0;
    const BOOL read = ::ReadConsoleW(state_->input.get(), line.data(),
                                     static_cast<DWORD>(line.size()), &length, nullptr);
    write(state_->output, L"\r\n");
    const std::wstring_view typed(line.data(), length);
    const std::size_t end = typed.find_first_of(L"\r\n");
    std::optional<std::string> secret;
    if (read && end != std::wstring_view::npos) { // else the input ended or the line was cut
        secret.emplace(narrow_secret(typed.substr(0, end)));
    }
    secure_zero(line.data(), sizeof line);
    return secret;
}

} // namespace platform
