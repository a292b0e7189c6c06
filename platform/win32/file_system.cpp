#include "platform/file_system.h"

#include <cerrno>
#include <io.h>

#include "platform/seams.h"
#include "platform/win32/handle.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr int existence = 0;
constexpr int reading_and_writing = 6;

SystemError result_of(int answer) {
    return answer == 0 ? SystemError() : SystemError::posix(errno);
}

} // namespace

SystemError create_directory(const std::string& path) {
    if (take_failure(Call::create_directory)) {
        return seams().failure;
    }
    return ::CreateDirectoryW(wide(path).c_str(), nullptr) ? SystemError() : last_error();
}

bool is_directory(const std::string& path) {
    if (take_failure(Call::is_directory)) {
        return false;
    }
    const DWORD attributes = ::GetFileAttributesW(wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

SystemError check_existence(const std::string& path) {
    if (take_failure(Call::existence)) {
        return seams().failure;
    }
    return result_of(::_waccess(wide(path).c_str(), existence));
}

SystemError check_read_write_access(const std::string& path) {
    if (take_failure(Call::access)) {
        return seams().failure;
    }
    return result_of(::_waccess(wide(path).c_str(), reading_and_writing));
}

SystemError create_for_group(const std::string& /*path*/) {
    return {};
}

SystemError probe_write_access(const std::string& path) {
    if (take_failure(Call::open)) {
        return seams().failure;
    }
    const Handle file(::CreateFileW(wide(path).c_str(), GENERIC_WRITE,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    return file ? SystemError() : last_error();
}

void remove_file(const char* path) noexcept {
    // No allocation: this runs in a handler of signals.
    wchar_t name[4096];
    if (::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, name, 4096) != 0) {
        ::DeleteFileW(name);
    }
}

} // namespace platform
