#include "platform/file_system.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/share_locks.h"

namespace platform {
namespace {

constexpr mode_t owner_only = 0600;
constexpr mode_t owner_and_reading_group = 0640;
constexpr mode_t all_write_bits = 0222;

SystemError result_of(int answer) {
    return answer == 0 ? SystemError() : SystemError::posix(errno);
}

std::string parent_of(const std::string& path) {
    const std::size_t end = path.rfind('/');
    return end == std::string::npos ? "." : path.substr(0, end + 1);
}

/// True when several accounts share the directory by its group.
bool shares_by_group(const std::string& directory) {
    struct stat status = {};
    return ::stat(directory.c_str(), &status) == 0 && (status.st_mode & S_ISGID) != 0;
}

/// Opens the file, or makes it with its permissions whatever the umask.
int open_or_make(const std::string& path) {
    int descriptor = ::open(path.c_str(), O_RDWR | O_CLOEXEC);
    if (descriptor >= 0 || errno != ENOENT) {
        return descriptor;
    }
    descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, owner_only);
    if (descriptor >= 0 && shares_by_group(parent_of(path))) {
        ::fchmod(descriptor, owner_and_reading_group);
    } else if (descriptor >= 0) {
        ::fchmod(descriptor, owner_only);
    }
    return descriptor;
}

} // namespace

bool exists(const std::string& path) {
    return !check_existence(path);
}

SystemError create_directory(const std::string& path) {
    return result_of(::mkdir(path.c_str(), 0777));
}

bool is_directory(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

SystemError check_existence(const std::string& path) {
    return result_of(::faccessat(AT_FDCWD, path.c_str(), F_OK, AT_EACCESS));
}

SystemError check_read_write_access(const std::string& path) {
    return result_of(::faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS));
}

SystemError probe_write_access(const std::string& path) {
    const auto file = open_file(path, FileAccess::write, FileDisposition::open_always,
                                FileSharing::read_write, {});
    if (file) {
        close_file(*file);
    }
    return file.error();
}

bool is_open_to_others(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & S_IRWXO) != 0;
}

SystemError set_key_file_writable(const std::string& path, bool writable) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return SystemError::posix(errno);
    }
    const mode_t mode = status.st_mode & 07777;
    return result_of(::chmod(path.c_str(), writable ? mode | S_IWUSR : mode & ~all_write_bits));
}

Result<FileHandle> open_key_file(const std::string& path) {
    const int descriptor = open_or_make(path);
    if (descriptor < 0) {
        return SystemError::posix(errno);
    }
    const SystemError refusal =
        take_share_locks(descriptor, FileAccess::read_write, FileSharing::none);
    if (refusal) {
        ::close(descriptor);
        return refusal;
    }
    return FileHandle{descriptor};
}

void remove_file(const char* path) noexcept {
    ::unlink(path);
}

void allow_removal(std::FILE*) noexcept {
    // Nothing keeps others from it.
}

} // namespace platform
