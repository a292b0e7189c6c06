#include "platform/permissions.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/last_error.h"

namespace platform {

SystemError check_read_access(const std::string& path) {
    return error_of(::faccessat(AT_FDCWD, path.c_str(), R_OK, AT_EACCESS));
}

bool is_writable_for_all(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & S_IWOTH) != 0 &&
           !(S_ISDIR(status.st_mode) && (status.st_mode & S_ISVTX) != 0);
}

} // namespace platform
