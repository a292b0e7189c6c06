#include "platform/terminal.h"

#include <array>
#include <cstdio>
#include <fcntl.h>
#include <io.h>

#include "platform/memory.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr std::size_t longest_line = 4096;

/// The console's input or output, whatever the standard streams are.
class Console {
  public:
    explicit Console(const wchar_t* name)
        : handle_(::CreateFileW(name, GENERIC_READ | GENERIC_WRITE,
                                FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                                nullptr)) {}
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;
    ~Console() {
        if (handle_ != INVALID_HANDLE_VALUE) {
            ::CloseHandle(handle_);
        }
    }
    HANDLE handle() const noexcept { return handle_; }

  private:
    HANDLE handle_;
};

/// Takes the echo from a console for a scope. Ctrl+C ends the read, and then the process.
class Silence {
  public:
    explicit Silence(HANDLE input)
        : input_(input)
        , usable_(::GetConsoleMode(input, &before_) &&
                  ::SetConsoleMode(input, ENABLE_LINE_INPUT | ENABLE_PROCESSED_INPUT)) {}
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence() {
        if (usable_) {
            ::SetConsoleMode(input_, before_);
        }
    }
    bool usable() const noexcept { return usable_; }

  private:
    HANDLE input_;
    DWORD before_ = 0;
    bool usable_;
};

bool write(HANDLE output, std::wstring_view text) {
    DWORD done = 0;
    return ::WriteConsoleW(output, text.data(), static_cast<DWORD>(text.size()), &done, nullptr);
}

} // namespace

bool output_is_terminal() {
    DWORD mode = 0;
    return ::GetConsoleMode(::GetStdHandle(STD_OUTPUT_HANDLE), &mode);
}

std::optional<std::string> ask_secret(const std::string& prompt) {
    const Console input(L"CONIN$");
    const Console output(L"CONOUT$");
    const Silence silence(input.handle());
    if (!silence.usable() || !write(output.handle(), wide(prompt))) {
        return std::nullopt;
    }
    std::array<wchar_t, longest_line> line{};
    DWORD length = 0;
    const BOOL read = ::ReadConsoleW(input.handle(), line.data(), static_cast<DWORD>(line.size()),
                                     &length, nullptr);
    write(output.handle(), L"\r\n");
    std::wstring_view typed(line.data(), length);
    const std::size_t end = typed.find_first_of(L"\r\n");
    std::optional<std::string> secret;
    if (read && end != std::wstring_view::npos) { // else the input ended, or the line was cut
        secret = narrow(typed.substr(0, end));
    }
    secure_zero(line.data(), sizeof line);
    return secret;
}

} // namespace platform
