#include "platform/file.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/share_locks.h"
#include "platform/seams.h"

namespace platform {
namespace {

SystemError last_error() {
    return SystemError::posix(errno);
}

int descriptor_of(FileHandle file) {
    return static_cast<int>(file);
}

int access_flags(FileAccess access) {
    switch (access) {
    case FileAccess::read:
        return O_RDONLY;
    case FileAccess::write:
        return O_WRONLY;
    case FileAccess::read_write:
        break;
    }
    return O_RDWR;
}

int disposition_flags(FileDisposition disposition) {
    switch (disposition) {
    case FileDisposition::create_new:
        return O_CREAT | O_EXCL;
    case FileDisposition::create_always:
    case FileDisposition::open_always:
        return O_CREAT;
    case FileDisposition::open_existing:
    case FileDisposition::truncate_existing:
        break;
    }
    return 0;
}

bool empties(FileDisposition disposition) {
    return disposition == FileDisposition::create_always ||
           disposition == FileDisposition::truncate_existing;
}

/// What comes after the open itself; the file is not emptied before others have let this one in.
SystemError settle(int descriptor, FileAccess access, FileDisposition disposition,
                   FileSharing sharing, FileHints hints) {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return last_error();
    }
    if (S_ISDIR(status.st_mode)) {
        return SystemError::posix(EISDIR);
    }
    if (const SystemError error = take_share_locks(descriptor, access, sharing)) {
        return error;
    }
    if (empties(disposition) && status.st_size != 0 && ::ftruncate(descriptor, 0) != 0) {
        return last_error();
    }
    if (hints.sequential_scan) {
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    } else if (hints.random_access) {
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_RANDOM);
    }
    return {};
}

template <class T, class Answer>
Result<T> result_of(Answer answer) {
    return answer < 0 ? Result<T>(last_error()) : Result<T>(static_cast<T>(answer));
}

} // namespace

Result<FileHandle> open_file(const std::string& name, FileAccess access,
                             FileDisposition disposition, FileSharing sharing, FileHints hints) {
    if (take_failure(Call::open)) {
        return seams().failure;
    }
    const int flags = access_flags(access) | disposition_flags(disposition) | O_CLOEXEC | O_NOCTTY |
                      (hints.write_through ? O_DSYNC : 0);
    const int descriptor = ::open(name.c_str(), flags, 0666);
    if (descriptor < 0) {
        return last_error();
    }
    if (const SystemError error = settle(descriptor, access, disposition, sharing, hints)) {
        ::close(descriptor);
        return error;
    }
    return FileHandle{descriptor};
}

void close_file(FileHandle file) noexcept {
    if (file != invalid_file) {
        ::close(descriptor_of(file));
    }
}

Result<std::uint32_t> read_file(FileHandle file, void* buffer, std::uint32_t count) {
    if (take_failure(Call::read)) {
        return seams().failure;
    }
    return result_of<std::uint32_t>(::read(descriptor_of(file), buffer, count));
}

Result<std::uint32_t> write_file(FileHandle file, const void* buffer, std::uint32_t count) {
    if (take_failure(Call::write)) {
        if (seams().failure) {
            return seams().failure;
        }
        count -= count != 0 ? 1 : 0;
    }
    return result_of<std::uint32_t>(::write(descriptor_of(file), buffer, count));
}

Result<std::uint32_t> read_file_at(FileHandle file, std::uint64_t position, void* buffer,
                                   std::uint32_t count) {
    if (take_failure(Call::read)) {
        return seams().failure;
    }
    const ssize_t got = ::pread(descriptor_of(file), buffer, count, static_cast<off_t>(position));
    if (got == 0 && count != 0) {
        return SystemError::posix(ENODATA);
    }
    return result_of<std::uint32_t>(got);
}

Result<std::uint64_t> seek_file(FileHandle file, std::int64_t offset, SeekMethod method) {
    if (take_failure(Call::seek)) {
        return seams().failure;
    }
    const int whence = method == SeekMethod::begin     ? SEEK_SET
                       : method == SeekMethod::current ? SEEK_CUR
                                                       : SEEK_END;
    return result_of<std::uint64_t>(::lseek(descriptor_of(file), offset, whence));
}

Result<std::uint64_t> file_size(FileHandle file) {
    if (take_failure(Call::size)) {
        return seams().failure;
    }
    struct stat status = {};
    return result_of<std::uint64_t>(::fstat(descriptor_of(file), &status) == 0 ? status.st_size
                                                                               : off_t{-1});
}

SystemError set_end_of_file(FileHandle file) {
    if (take_failure(Call::set_end)) {
        return seams().failure;
    }
    const off_t position = ::lseek(descriptor_of(file), 0, SEEK_CUR);
    if (position < 0 || ::ftruncate(descriptor_of(file), position) != 0) {
        return last_error();
    }
    return {};
}

SystemError flush_file(FileHandle file) {
    if (take_failure(Call::flush)) {
        return seams().failure;
    }
    return ::fsync(descriptor_of(file)) == 0 ? SystemError() : last_error();
}

} // namespace platform
