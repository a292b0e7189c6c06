#include "platform/permissions.h"

#include <io.h>

#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"

namespace platform {
namespace {

constexpr int reading = 4;

} // namespace

SystemError check_read_access(const std::string& path) {
    return runtime_error_of(::_waccess(wide(path).c_str(), reading));
}

bool is_writable_for_all(const std::string&) {
    return false;
}

} // namespace platform
