#include "platform/posix/opening.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/link_text.h"
#include "platform/posix/lock_file.h"
#include "platform/posix/retry.h"

namespace platform {
namespace {

SystemError check_kind(int descriptor) {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return last_error();
    }
    if (S_ISREG(status.st_mode)) {
        return {};
    }
    if (!S_ISCHR(status.st_mode)) {
        return SystemError::posix(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    // Transfers to a device block again. Regular files ignore the flag.
    const int flags = ::fcntl(descriptor, F_GETFL);
    return flags >= 0 && ::fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0 ? SystemError()
                                                                                : last_error();
}

std::string parent_of(const std::string& path) {
    const std::size_t end = path.rfind('/');
    return end == std::string::npos ? "." : path.substr(0, end + 1);
}

/// For file systems without nameless files, or if /proc is missing.
SystemError create_in_two_steps(const std::string& path, mode_t mode) {
    const Descriptor file(
        retry([&] { return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode); }));
    if (file.get() >= 0 && ::fchmod(file.get(), mode) == 0) {
        return {};
    }
    const SystemError error = last_error();
    if (file.get() >= 0) {
        ::unlink(path.c_str());
    }
    return error;
}

} // namespace

Result<int> open_admissible(const std::string& path, int flags) {
    constexpr int always = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    Descriptor file(retry([&] { return ::open(path.c_str(), flags | always, 0666); }));
    if (file.get() < 0) {
        // Another process has a lease on the file; only an open that waits would break it.
        return errno == EWOULDBLOCK ? sharing_violation() : last_error();
    }
    if (const SystemError error = check_kind(file.get())) {
        return error;
    }
    const int highest = highest_lock_descriptor();
    if (file.get() > highest) {
        return file.release();
    }
    // Moved before it holds any lock.
    const int higher = ::fcntl(file.get(), F_DUPFD_CLOEXEC, highest + 1);
    return higher < 0 ? Result<int>(last_error()) : higher;
}

int open_nameless(const std::string& path) {
    Descriptor file(retry(
        [&] { return ::open(parent_of(path).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, 0600); }));
    const bool can_be_named =
        file.get() >= 0 && ::access(link_of_descriptor(file.get()).c_str(), F_OK) == 0;
    return can_be_named ? file.release() : -1;
}

int give_name(int descriptor, const std::string& path) {
    return ::linkat(AT_FDCWD, link_of_descriptor(descriptor).c_str(), AT_FDCWD, path.c_str(),
                    AT_SYMLINK_FOLLOW);
}

SystemError create_with_mode(const std::string& path, mode_t mode) {
    const Descriptor file(open_nameless(path));
    if (file.get() >= 0 && ::fchmod(file.get(), mode) == 0 && give_name(file.get(), path) == 0) {
        return {};
    }
    return errno == EEXIST ? last_error() : create_in_two_steps(path, mode);
}

Result<bool> is_shared_by_group(const std::string& path) {
    struct stat status = {};
    if (::stat(parent_of(path).c_str(), &status) != 0) {
        return last_error();
    }
    return (status.st_mode & S_ISGID) != 0;
}

} // namespace platform
