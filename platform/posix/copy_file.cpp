#include <array>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/file_operations.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/link_text.h"
#include "platform/posix/share_locks.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr std::size_t largest_range = std::size_t{1} << 30;
constexpr std::size_t block_size = std::size_t{1} << 16;

SystemError last_error() {
    return SystemError::posix(errno);
}

/// Looks at an opened file and takes its share locks. O_NONBLOCK let the open of a pipe return, and
/// means nothing to the regular files that are let through.
SystemError admit(int file, FileAccess access, FileSharing sharing, struct stat& status) {
    if (file < 0 || ::fstat(file, &status) != 0) {
        return last_error();
    }
    if (!S_ISREG(status.st_mode)) {
        return SystemError::posix(S_ISDIR(status.st_mode) ? EISDIR : EINVAL);
    }
    return take_share_locks(file, access, sharing);
}

int open_target(const std::string& path, bool failIfExists) {
    constexpr int flags = O_WRONLY | O_CREAT | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    return ::open(path.c_str(), flags | (failIfExists ? O_EXCL : 0), S_IRUSR | S_IWUSR);
}

bool write_whole(int target, const char* bytes, std::size_t count) {
    while (count != 0) {
        const ssize_t written = ::write(target, bytes, count);
        if (written < 0) {
            return false;
        }
        bytes += written;
        count -= static_cast<std::size_t>(written);
    }
    return true;
}

/// The file system's own copy as far as it goes, then the rest block by block. So whatever stops
/// the first, and be it a file whose size the system does not tell, ends well or in the error of
/// a plain read or write.
SystemError copy_content(int source, int target) {
    while (::copy_file_range(source, nullptr, target, nullptr, largest_range, 0) > 0) {
    }
    std::array<char, block_size> block{};
    ssize_t count = 0;
    while ((count = ::read(source, block.data(), block.size())) > 0) {
        if (!write_whole(target, block.data(), static_cast<std::size_t>(count))) {
            return last_error();
        }
    }
    if (take_failure(Call::copy)) {
        return seams().failure;
    }
    return count == 0 ? SystemError() : last_error();
}

void keep_permissions_and_times(const struct stat& source, int target) {
    constexpr mode_t permissions = S_IRWXU | S_IRWXG | S_IRWXO;
    const std::array<timespec, 2> times{source.st_atim, source.st_mtim};
    ::fchmod(target, source.st_mode & permissions);
    ::futimens(target, times.data());
}

/// Removes the target under its own name, also when it was opened through a link.
void discard(int target) {
    if (const auto path = text_of_link(link_of_descriptor(target))) {
        ::unlink((*path).c_str());
    }
}

} // namespace

SystemError copy_file(const std::string& source, const std::string& target, bool failIfExists) {
    const Descriptor from(::open(source.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK));
    struct stat fromStatus = {};
    if (const auto error =
            admit(from.get(), FileAccess::read, FileSharing::read_write, fromStatus)) {
        return error;
    }
    const Descriptor to(open_target(target, failIfExists));
    struct stat toStatus = {};
    if (const auto error = admit(to.get(), FileAccess::write, FileSharing::none, toStatus)) {
        return error;
    }
    if (fromStatus.st_dev == toStatus.st_dev && fromStatus.st_ino == toStatus.st_ino) {
        return sharing_violation();
    }
    SystemError error = ::ftruncate(to.get(), 0) == 0 ? SystemError() : last_error();
    if (!error) {
        error = copy_content(from.get(), to.get());
    }
    if (error) {
        discard(to.get());
        return error;
    }
    keep_permissions_and_times(fromStatus, to.get());
    return {};
}

} // namespace platform
