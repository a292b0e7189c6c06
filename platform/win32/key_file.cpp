#include "platform/key_file.h"

#include <io.h>

#include "platform/seams.h"
#include "platform/win32/handle.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr int mode_read_write = 0x180;
constexpr int mode_read_only = 0x100;

} // namespace

Result<FileHandle> open_key_file(const std::string& path) {
    return open_handle(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_ALWAYS);
}

SystemError set_key_file_writable(const std::string& path, bool writable) {
    PLATFORM_SEAM(set_mode);
    return runtime_error_of(
        ::_wchmod(wide(path).c_str(), writable ? mode_read_write : mode_read_only));
}

bool is_open_to_others(const std::string&) {
    return false;
}

} // namespace platform
