#include "platform/posix/lock_file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/opening.h"
#include "platform/posix/retry.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr mode_t readable_for_all = 0444;
constexpr mode_t sticky_for_all = S_ISVTX | S_IWOTH;
constexpr const char* directories[] = {"/run/lock", "/var/tmp", "/tmp"};

} // namespace

Result<std::string> lock_file_path(const std::string& mutexName) {
    for (const char* directory : directories) {
        struct stat status = {};
        if (::stat(directory, &status) != 0) {
            if (!last_error().is_not_found()) {
                return last_error(); // the next directory would be another mutex
            }
        } else if ((status.st_mode & sticky_for_all) == sticky_for_all) {
            return std::string(directory) + '/' + mutexName.substr(mutexName.rfind('\\') + 1) +
                   seams().mutex_name_suffix;
        }
    }
    return SystemError::posix(ENOENT);
}

Result<int> open_existing_lock_file(const std::string& path) {
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK;
    Descriptor file(retry([&] { return ::open(path.c_str(), flags); }));
    struct stat status = {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) {
        return last_error();
    }
    return S_ISREG(status.st_mode) ? Result<int>(file.release()) : SystemError::posix(EINVAL);
}

Result<int> open_lock_file(const std::string& path) {
    // Opened before it is created: a sticky directory may refuse to create what another made.
    return open_or_create(path, readable_for_all, [&] { return open_existing_lock_file(path); });
}

Result<bool> is_named(int descriptor, const std::string& path) {
    struct stat opened = {};
    struct stat named = {};
    if (::fstat(descriptor, &opened) != 0 || ::lstat(path.c_str(), &named) != 0) {
        const SystemError error = last_error();
        return error.is_not_found() ? Result<bool>(false) : error;
    }
    return opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace platform
