#include "platform/win32/wide.h"

#include <climits>
#include <stdexcept>

#include "platform/win32/windows.h"

namespace platform {
namespace {

/// The system's lengths have 31 bits.
int checked_length(std::size_t length) {
    if (length > INT_MAX) {
        throw std::length_error("A text is too long for the system");
    }
    return static_cast<int>(length);
}

} // namespace

std::wstring wide(std::string_view text) {
    const int length = checked_length(text.size());
    std::wstring result(text.size(), L'\0'); // UTF-16 never needs more units than UTF-8
    const int units = ::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text.data(), length,
                                            result.data(), length);
    result.resize(static_cast<std::size_t>(units));
    return result;
}

std::string narrow(std::wstring_view text) {
    const int most_bytes = checked_length(text.size() * 3); // UTF-8 needs no more for a unit
    std::string result(text.size() * 3, '\0');
    const int bytes = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), most_bytes / 3, result.data(),
                                            most_bytes, nullptr, nullptr);
    result.resize(static_cast<std::size_t>(bytes));
    return result;
}

} // namespace platform
