#include "platform/file_operations.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/link_text.h"
#include "platform/posix/retry.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr std::int64_t second = 1'000'000'000;

timespec time_of(const std::int64_t* nanoseconds) {
    if (nanoseconds == nullptr) {
        return {.tv_sec = 0, .tv_nsec = UTIME_OMIT};
    }
    std::int64_t seconds = *nanoseconds / second;
    std::int64_t rest = *nanoseconds % second;
    if (rest < 0) {
        --seconds;
        rest += second;
    }
    return {.tv_sec = seconds, .tv_nsec = rest};
}

} // namespace

TimesChange set_file_times(const std::string& path, const std::int64_t* accessed,
                           const std::int64_t* modified) {
    const Descriptor file(retry([&] { return ::open(path.c_str(), O_PATH | O_CLOEXEC); }));
    if (file.get() < 0) {
        return {false, last_error()};
    }
    if (take_failure(Call::set_times)) {
        return {true, seams().failure};
    }
    const std::array<timespec, 2> times{time_of(accessed), time_of(modified)};
    return {true, error_of(::utimensat(AT_FDCWD, path.c_str(), times.data(), 0))};
}

Result<std::uint64_t> file_size_by_name(const std::string& path) {
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return last_error();
    }
    return static_cast<std::uint64_t>(status.st_size);
}

Result<FileHandle> open_link_target(const std::string& path) {
    return open_file(path, FileAccess::read, FileDisposition::open_existing, FileSharing::read, {});
}

FilePath path_of_file(FileHandle file, std::size_t capacity) {
    if (take_failure(Call::path_of_file)) {
        return {{}, 0, seams().failure};
    }
    const auto descriptor = static_cast<int>(file);
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return {{}, 0, last_error()};
    }
    if (status.st_size == 0) {
        return {}; // required: an empty file has no path
    }
    if (status.st_nlink == 0) {
        return {{}, 0, SystemError::posix(ENOENT)};
    }
    Result<std::string> path = text_of_link(link_of_descriptor(descriptor));
    if (!path) {
        return {{}, 0, path.error()};
    }
    const std::size_t length = path->size();
    if (length + 1 > capacity) {
        return {{}, length + 1, SystemError::posix(ENAMETOOLONG)};
    }
    return {std::move(*path), length, {}};
}

} // namespace platform
