#include "platform/append_file.h"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "platform/posix/descriptor.h"

namespace platform {

Result<AppendFile> AppendFile::open(const std::string& name) {
    // Without O_NONBLOCK the open of a FIFO waits for a reader.
    constexpr int flags = O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
    Descriptor descriptor(::open(name.c_str(), flags, 0666));
    struct stat status {};
    if (descriptor.get() < 0 || ::fstat(descriptor.get(), &status) != 0) {
        return SystemError::posix(errno);
    }
    if (!S_ISREG(status.st_mode) && !S_ISCHR(status.st_mode)) {
        return SystemError::posix(EINVAL);
    }
    return AppendFile(descriptor.release());
}

std::size_t AppendFile::append(std::string_view text) noexcept {
    ssize_t written = -1;
    do {
        written = ::write(static_cast<int>(file_), text.data(), text.size());
    } while (written < 0 && errno == EINTR);
    return static_cast<std::size_t>(std::max<ssize_t>(written, 0));
}

std::uint64_t AppendFile::size() const noexcept {
    struct stat status {};
    return ::fstat(static_cast<int>(file_), &status) == 0
               ? static_cast<std::uint64_t>(status.st_size)
               : 0;
}

bool AppendFile::is_named(const std::string& name) const {
    struct stat own {};
    struct stat named {};
    return ::fstat(static_cast<int>(file_), &own) == 0 && ::stat(name.c_str(), &named) == 0 &&
           own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

bool AppendFile::try_lock() noexcept {
    return ::flock(static_cast<int>(file_), LOCK_EX | LOCK_NB) == 0;
}

} // namespace platform
