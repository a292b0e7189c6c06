#include "platform/file_operations.h"
#include "platform/seams.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {

SystemError copy_file(const std::string& source, const std::string& target, bool failIfExists) {
    PLATFORM_SEAM(copy);
    return error_of(
        ::CopyFileW(wide(source).c_str(), wide(target).c_str(), failIfExists ? TRUE : FALSE));
}

} // namespace platform
