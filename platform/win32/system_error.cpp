#include "platform/system_error.h"

#include <array>
#include <string_view>

#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {

std::string describe_windows_error(unsigned long number) {
    std::array<wchar_t, 512> text{};
    const DWORD length = ::FormatMessageW(
        FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS | FORMAT_MESSAGE_MAX_WIDTH_MASK,
        nullptr, number, 0, text.data(), text.size(), nullptr);
    std::wstring_view message(text.data(), length);
    const std::size_t end = message.find_last_not_of(L" .\r\n");
    message = message.substr(0, end + 1); // npos + 1 is 0
    return message.empty() ? "Windows error " + std::to_string(number) : narrow(message);
}

SystemError sharing_violation() noexcept {
    return SystemError::windows(ERROR_SHARING_VIOLATION);
}

} // namespace platform
