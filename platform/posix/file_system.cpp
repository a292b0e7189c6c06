#include "platform/file_system.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/file.h"
#include "platform/posix/last_error.h"
#include "platform/posix/opening.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr mode_t shared_by_group = 0660;

SystemError check(const std::string& path, int mode) {
    return error_of(::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS));
}

} // namespace

SystemError create_directory(const std::string& path) {
    PLATFORM_SEAM(create_directory);
    return error_of(::mkdir(path.c_str(), 0777));
}

bool is_directory(const std::string& path) {
    struct stat status = {};
    return !take_failure(Call::is_directory) && ::stat(path.c_str(), &status) == 0 &&
           S_ISDIR(status.st_mode);
}

SystemError check_existence(const std::string& path) {
    PLATFORM_SEAM(existence);
    return check(path, F_OK);
}

SystemError check_read_write_access(const std::string& path) {
    PLATFORM_SEAM(access);
    return check(path, R_OK | W_OK);
}

SystemError create_for_group(const std::string& path) {
    if (!check(path, F_OK).is_not_found()) {
        return {};
    }
    const Result<bool> shared = is_shared_by_group(path);
    if (!shared || !*shared) {
        return shared.error();
    }
    const SystemError error = create_with_mode(path, shared_by_group);
    return error.is_already_exists() ? SystemError() : error;
}

SystemError probe_write_access(const std::string& path) {
    if (const SystemError error = create_for_group(path)) {
        return error;
    }
    const auto file = open_file(path, FileAccess::write, FileDisposition::open_always,
                                FileSharing::read_write, {});
    close_file(file ? *file : invalid_file);
    return file.error();
}

void remove_file(const char* path) noexcept {
    ::unlink(path);
}

} // namespace platform
