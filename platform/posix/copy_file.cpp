#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/file_operations.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/link_text.h"
#include "platform/posix/retry.h"
#include "platform/posix/share_locks.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr mode_t permissions = S_IRWXU | S_IRWXG | S_IRWXO;
constexpr std::size_t largest_range = std::size_t{1} << 30;

int open_now(const std::string& path, int flags) {
    return retry([&] {
        return ::open(path.c_str(), flags | O_CLOEXEC | O_NOCTTY | O_NONBLOCK, S_IRUSR | S_IWUSR);
    });
}

/// Checks an opened file and takes its share locks. O_NONBLOCK lets the open of a FIFO return and
/// has no effect on regular files.
SystemError admit(int file, FileAccess access, FileSharing sharing, struct stat& status) {
    PLATFORM_SEAM(open);
    if (file < 0 || ::fstat(file, &status) != 0) {
        return last_error();
    }
    if (!S_ISREG(status.st_mode)) {
        return SystemError::posix(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    return take_share_locks(file, access, sharing);
}

/// The file to copy into.
struct Target {
    Descriptor file;
    bool is_new; ///< created by this call
};

Target open_target(const std::string& path, bool failIfExists) {
    const int existing = failIfExists ? -1 : open_now(path, O_WRONLY);
    if (existing >= 0 || (!failIfExists && errno != ENOENT)) {
        return {Descriptor(existing), false};
    }
    const int made = open_now(path, O_WRONLY | O_CREAT | (failIfExists ? O_EXCL : 0));
    return {Descriptor(made), made >= 0};
}

/// Replaces the content: by the file system's own copy as far as possible, then block by block. So
/// a file that the former cannot copy, such as one whose size the system does not know, is copied,
/// or fails with the error of a plain read or write.
SystemError copy_content(int source, int target) {
    if (retry([&] { return ::ftruncate(target, 0); }) != 0) {
        return last_error();
    }
    while (retry([&] {
               return ::copy_file_range(source, nullptr, target, nullptr, largest_range, 0);
           }) > 0) {
    }
    return take_failure(Call::copy) ? seams().failure : copy_rest(source, target);
}

void keep_permissions_and_times(const struct stat& source, int target) {
    const std::array<timespec, 2> times{source.st_atim, source.st_mtim};
    ::fchmod(target, source.st_mode & permissions);
    ::futimens(target, times.data());
}

/// Removes the target itself, also if it was opened through a link.
void discard(int target) {
    if (const auto path = text_of_link(link_of_descriptor(target))) {
        ::unlink(path->c_str());
    }
}

} // namespace

SystemError copy_file(const std::string& source, const std::string& target, bool failIfExists) {
    const Descriptor from(open_now(source, O_RDONLY));
    struct stat fromStatus = {};
    if (const auto error =
            admit(from.get(), FileAccess::read, FileSharing::read_write, fromStatus)) {
        return error;
    }
    const Target to = open_target(target, failIfExists);
    struct stat toStatus = {};
    if (const auto error = admit(to.file.get(), FileAccess::write, FileSharing::none, toStatus)) {
        if (to.is_new && !error.is_sharing_violation()) { // else another opener has it by now
            discard(to.file.get());
        }
        return error;
    }
    if (fromStatus.st_dev == toStatus.st_dev && fromStatus.st_ino == toStatus.st_ino) {
        return sharing_violation();
    }
    // No one may read the copy who may not read the source.
    ::fchmod(to.file.get(), toStatus.st_mode & fromStatus.st_mode & permissions);
    if (const auto error = copy_content(from.get(), to.file.get())) {
        discard(to.file.get());
        return error;
    }
    keep_permissions_and_times(fromStatus, to.file.get());
    return {};
}

} // namespace platform
