#include "platform/file_system.h"

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

} // namespace

SystemError create_directory(const std::string& path) {
    PLATFORM_SEAM(create_directory);
    return error_of(::CreateDirectoryW(wide(path).c_str(), nullptr));
}

bool is_directory(const std::string& path) {
    if (take_failure(Call::is_directory)) {
        return false;
    }
    const DWORD attributes = ::GetFileAttributesW(wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

SystemError check_existence(const std::string& path) {
    PLATFORM_SEAM(existence);
    return runtime_error_of(::_waccess(wide(path).c_str(), existence));
}

SystemError check_read_write_access(const std::string& path) {
    PLATFORM_SEAM(access);
    return runtime_error_of(::_waccess(wide(path).c_str(), reading_and_writing));
}

SystemError create_for_group(const std::string& /*path*/) {
    return {};
}

SystemError probe_write_access(const std::string& path) {
    const auto file =
        open_handle(path, GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, OPEN_ALWAYS);
    close_file(file ? *file : invalid_file);
    return file.error();
}

void remove_file(const char* path) noexcept {
    // Does not allocate, since it may run in a signal handler.
    wchar_t name[4096];
    if (::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, name, 4096) != 0) {
        ::DeleteFileW(name);
    }
}

} // namespace platform
