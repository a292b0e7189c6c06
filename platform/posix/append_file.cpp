#include "platform/append_file.h"

#include <algorithm>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/opening.h"
#include "platform/posix/retry.h"

namespace platform {

Result<AppendFile> AppendFile::open(const std::string& name) {
    const Result<int> opened = open_admissible(name, O_WRONLY | O_APPEND | O_CREAT);
    return opened ? Result<AppendFile>(AppendFile(*opened)) : opened.error();
}

std::size_t AppendFile::append(std::string_view text) noexcept {
    const ssize_t written =
        retry([&] { return ::write(static_cast<int>(file_), text.data(), text.size()); });
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
    return retry([&] { return ::flock(static_cast<int>(file_), LOCK_EX | LOCK_NB); }) == 0;
}

} // namespace platform
