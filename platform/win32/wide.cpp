#include "platform/win32/wide.h"

#include "platform/win32/windows.h"

namespace platform {

std::wstring wide(std::string_view text) {
    const int length = static_cast<int>(text.size());
    std::wstring result(text.size(), L'\0'); // UTF-16 never needs more units than UTF-8
    const int units = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length,
                                            result.data(), length);
    result.resize(static_cast<std::size_t>(units));
    return result;
}

std::string narrow(std::wstring_view text) {
    const int length = static_cast<int>(text.size());
    std::string result(text.size() * 3, '\0'); // nor UTF-8 more than three bytes a unit
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(),
                                            static_cast<int>(result.size()), nullptr, nullptr);
    result.resize(static_cast<std::size_t>(bytes));
    return result;
}

SystemError last_error() noexcept {
    return SystemError::windows(::GetLastError());
}

} // namespace platform
