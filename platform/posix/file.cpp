#include "platform/file.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/opening.h"
#include "platform/posix/retry.h"
#include "platform/posix/share_locks.h"
#include "platform/seams.h"

namespace platform {
namespace {

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

/// Devices have nothing to empty.
bool empty(int descriptor) {
    struct stat status = {};
    return ::fstat(descriptor, &status) == 0 &&
           (!S_ISREG(status.st_mode) || retry([&] { return ::ftruncate(descriptor, 0); }) == 0);
}

void advise(int descriptor, FileHints hints) {
    if (hints.sequential_scan) {
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
    } else if (hints.random_access) {
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_RANDOM);
    }
}

template <class T, class Answer>
Result<T> result_of(Answer answer) {
    return answer < 0 ? Result<T>(last_error()) : Result<T>(static_cast<T>(answer));
}

} // namespace

Result<FileHandle> open_file(const std::string& name, FileAccess access,
                             FileDisposition disposition, FileSharing sharing, FileHints hints) {
    PLATFORM_SEAM(open);
    const int flags =
        access_flags(access) | disposition_flags(disposition) | (hints.write_through ? O_DSYNC : 0);
    const Result<int> opened = open_admissible(name, flags);
    if (!opened) {
        return opened.error();
    }
    Descriptor file(*opened);
    if (const SystemError error = take_share_locks(file.get(), access, sharing)) {
        return error;
    }
    if (empties(disposition) && !empty(file.get())) {
        return last_error();
    }
    advise(file.get(), hints);
    return FileHandle{file.release()};
}

Result<FileHandle> open_input(const std::string& name) {
    PLATFORM_SEAM(open);
    return result_of<FileHandle>(
        retry([&] { return ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
}

void close_file(FileHandle file) noexcept {
    if (file != invalid_file) {
        release_share_locks(descriptor_of(file));
        ::close(descriptor_of(file));
    }
}

Result<std::uint32_t> read_file(FileHandle file, void* buffer, std::uint32_t count) {
    PLATFORM_SEAM(read);
    return result_of<std::uint32_t>(
        retry([&] { return ::read(descriptor_of(file), buffer, count); }));
}

Result<std::uint32_t> write_file(FileHandle file, const void* buffer, std::uint32_t count) {
    if (take_failure(Call::write)) {
        if (seams().failure) {
            return seams().failure;
        }
        count -= count != 0 ? 1 : 0;
    }
    // The system writes at most 2^31 bytes in one call.
    const char* bytes = static_cast<const char*>(buffer);
    std::uint32_t done = 0;
    ssize_t written = 0;
    do {
        written = retry([&] { return ::write(descriptor_of(file), bytes + done, count - done); });
        done += static_cast<std::uint32_t>(std::max<ssize_t>(written, 0));
    } while (written > 0 && done < count);
    return written < 0 && done == 0 ? Result<std::uint32_t>(last_error()) : done;
}

Result<std::uint32_t> read_file_at(FileHandle file, std::uint64_t position, void* buffer,
                                   std::uint32_t count) {
    PLATFORM_SEAM(read);
    const ssize_t got = retry(
        [&] { return ::pread(descriptor_of(file), buffer, count, static_cast<off_t>(position)); });
    if (got == 0 && count != 0) {
        return SystemError::posix(ENODATA);
    }
    return result_of<std::uint32_t>(got);
}

Result<std::uint64_t> seek_file(FileHandle file, std::int64_t offset, SeekMethod method) {
    PLATFORM_SEAM(seek);
    const int whence = method == SeekMethod::begin     ? SEEK_SET
                       : method == SeekMethod::current ? SEEK_CUR
                                                       : SEEK_END;
    return result_of<std::uint64_t>(::lseek(descriptor_of(file), offset, whence));
}

Result<std::uint64_t> file_size(FileHandle file) {
    PLATFORM_SEAM(size);
    struct stat status = {};
    return result_of<std::uint64_t>(::fstat(descriptor_of(file), &status) == 0 ? status.st_size
                                                                               : off_t{-1});
}

SystemError set_end_of_file(FileHandle file) {
    PLATFORM_SEAM(set_end);
    const off_t position = ::lseek(descriptor_of(file), 0, SEEK_CUR);
    if (position < 0 || retry([&] { return ::ftruncate(descriptor_of(file), position); }) != 0) {
        return last_error();
    }
    return {};
}

SystemError flush_file(FileHandle file) {
    PLATFORM_SEAM(flush);
    return error_of(retry([&] { return ::fsync(descriptor_of(file)); }));
}

} // namespace platform
