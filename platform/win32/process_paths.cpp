#include "platform/process_paths.h"

#include <array>
#include <cerrno>
#include <direct.h>

#include "platform/seams.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr std::size_t ordinary_size = 2048;
constexpr DWORD largest_name_size = 33268;

} // namespace

SystemError set_current_directory(const std::string& path) {
    return error_of(::SetCurrentDirectoryW(wide(path).c_str()));
}

Result<std::string> current_directory(std::size_t& bufferSize) {
    bufferSize = MAX_PATH;
    PLATFORM_SEAM(current_directory);
    std::array<wchar_t, MAX_PATH> first{};
    std::wstring longer;
    wchar_t* buffer = first.data();
    DWORD length = ::GetCurrentDirectoryW(MAX_PATH, buffer);
    while (length != 0 && length >= bufferSize) { // the directory may change meanwhile
        bufferSize = length;
        longer.assign(bufferSize, L'\0');
        buffer = longer.data();
        length = ::GetCurrentDirectoryW(length, buffer);
    }
    if (length == 0) {
        return last_error();
    }
    return narrow({buffer, length});
}

Result<std::string> runtime_current_directory() {
    PLATFORM_SEAM(current_directory);
    std::array<wchar_t, ordinary_size> buffer{};
    if (::_wgetcwd(buffer.data(), static_cast<int>(buffer.size())) == nullptr) {
        return SystemError::posix(errno);
    }
    return narrow(buffer.data());
}

Result<std::string> application_path() {
    PLATFORM_SEAM(application_path);
    std::array<wchar_t, ordinary_size> first{};
    DWORD length = ::GetModuleFileNameW(nullptr, first.data(), first.size());
    if (length == 0) {
        return last_error();
    }
    if (length < first.size() || ::GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return narrow({first.data(), length});
    }
    std::wstring longer(largest_name_size, L'\0');
    length = ::GetModuleFileNameW(nullptr, longer.data(), largest_name_size);
    if (length == 0) {
        return last_error();
    }
    if (length == largest_name_size) {
        return SystemError::windows(ERROR_INSUFFICIENT_BUFFER);
    }
    return narrow({longer.data(), length});
}

} // namespace platform
