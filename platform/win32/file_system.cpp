#include "platform/file_system.h"

#include <cerrno>
#include <io.h>

#include "platform/seams.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr int existence = 0;
constexpr int reading_and_writing = 6;
constexpr int mode_read_write = 0x180;
constexpr int mode_read_only = 0x100;

SystemError result_of(int answer) {
    return answer == 0 ? SystemError() : SystemError::posix(errno);
}

} // namespace

bool exists(const std::string& path) {
    return !check_existence(path);
}

SystemError create_directory(const std::string& path) {
    return ::CreateDirectoryW(wide(path).c_str(), nullptr) ? SystemError() : last_error();
}

bool is_directory(const std::string& path) {
    const DWORD attributes = ::GetFileAttributesW(wide(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

SystemError check_existence(const std::string& path) {
    return result_of(::_waccess(wide(path).c_str(), existence));
}

SystemError check_read_write_access(const std::string& path) {
    return result_of(::_waccess(wide(path).c_str(), reading_and_writing));
}

bool is_open_to_others(const std::string&) {
    return false;
}

SystemError probe_write_access(const std::string& path) {
    if (take_failure(Call::open)) {
        return seams().failure;
    }
    const HANDLE handle =
        ::CreateFileW(wide(path).c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return last_error();
    }
    ::CloseHandle(handle);
    return {};
}

SystemError set_key_file_writable(const std::string& path, bool writable) {
    return result_of(::_wchmod(wide(path).c_str(), writable ? mode_read_write : mode_read_only));
}

Result<FileHandle> open_key_file(const std::string& path) {
    const HANDLE handle = ::CreateFileW(wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                        nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return last_error();
    }
    return reinterpret_cast<FileHandle>(handle);
}

void remove_file(const char* path) noexcept {
    // No allocation: this runs in a handler of signals.
    wchar_t name[4096];
    if (::MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path, -1, name, 4096) != 0) {
        ::DeleteFileW(name);
    }
}

void allow_removal(std::FILE* file) noexcept {
    // The same file by a second handle, which shares deletion as the C runtime's own does not.
    const auto own = reinterpret_cast<HANDLE>(::_get_osfhandle(::_fileno(file)));
    const HANDLE sharing = ::ReOpenFile(own, GENERIC_READ | GENERIC_WRITE,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, 0);
    if (sharing == INVALID_HANDLE_VALUE) {
        return;
    }
    const int descriptor = ::_open_osfhandle(reinterpret_cast<std::intptr_t>(sharing), 0);
    ::_dup2(descriptor, ::_fileno(file));
    ::_close(descriptor);
}

} // namespace platform
