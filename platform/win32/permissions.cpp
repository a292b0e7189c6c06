#include "platform/permissions.h"

#include <cerrno>
#include <io.h>

#include "platform/win32/wide.h"

namespace platform {
namespace {

constexpr int reading = 4;

} // namespace

SystemError check_read_access(const std::string& path) {
    return ::_waccess(wide(path).c_str(), reading) == 0 ? SystemError() : SystemError::posix(errno);
}

Result<bool> is_writable_for_all(const std::string&) {
    return false;
}

} // namespace platform
