#include "platform/key_file.h"

#include <cerrno>
#include <io.h>

#include "platform/seams.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr int mode_read_write = 0x180;
constexpr int mode_read_only = 0x100;

} // namespace

Result<FileHandle> open_key_file(const std::string& path) {
    if (take_failure(Call::open)) {
        return seams().failure;
    }
    const HANDLE handle =
        ::CreateFileW(wide(path).c_str(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                      OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return last_error();
    }
    return reinterpret_cast<FileHandle>(handle);
}

SystemError set_key_file_writable(const std::string& path, bool writable) {
    if (take_failure(Call::set_mode)) {
        return seams().failure;
    }
    const int answer = ::_wchmod(wide(path).c_str(), writable ? mode_read_write : mode_read_only);
    return answer == 0 ? SystemError() : SystemError::posix(errno);
}

Result<bool> is_open_to_others(const std::string&) {
    return false;
}

} // namespace platform
