#include "platform/removal.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/retry.h"
#include "platform/seams.h"

namespace platform {
namespace {

using Step = LinkRemoval::Step;

/// A name, and the descriptor of the directory that it is resolved in.
struct Place {
    int directory;
    std::string name;
};

/// The system would follow a link whose path ends in a separator.
std::string without_trailing_separators(const std::string& path) {
    const std::size_t last = path.find_last_not_of('/');
    return last == std::string::npos ? path : path.substr(0, last + 1);
}

Place place_of(FileHandle anchor, const std::string& path) {
    if (seams().before_removal) {
        seams().before_removal(path);
    }
    return anchor == invalid_file
               ? Place{AT_FDCWD, path}
               : Place{static_cast<int>(anchor), path.substr(path.rfind('/') + 1)};
}

SystemError unlink(const Place& place, int flags) {
    return error_of(::unlinkat(place.directory, place.name.c_str(), flags));
}

} // namespace

Result<RemovalAnchor> RemovalAnchor::open(const std::string& path, bool followLinks) const {
    const Place place = place_of(directory_, without_trailing_separators(path));
    PLATFORM_SEAM(open_directory);
    const int flags = O_PATH | O_DIRECTORY | O_CLOEXEC | (followLinks ? 0 : O_NOFOLLOW);
    const int directory =
        retry([&] { return ::openat(place.directory, place.name.c_str(), flags); });
    if (directory < 0) {
        return last_error();
    }
    return RemovalAnchor(FileHandle{directory});
}

SystemError RemovalAnchor::remove_file(const std::string& path) const {
    PLATFORM_SEAM(remove_file);
    return unlink(place_of(directory_, path), 0);
}

SystemError RemovalAnchor::remove_directory(const std::string& path) const {
    return unlink(place_of(directory_, path), AT_REMOVEDIR);
}

LinkRemoval RemovalAnchor::remove_link(const std::string& path) const {
    const Place place = place_of(directory_, without_trailing_separators(path));
    constexpr int flags = O_PATH | O_NOFOLLOW | O_CLOEXEC;
    const Descriptor link(
        retry([&] { return ::openat(place.directory, place.name.c_str(), flags); }));
    if (link.get() < 0) {
        return {Step::open, last_error()};
    }
    struct stat status = {};
    if (::fstat(link.get(), &status) != 0) {
        return {Step::read, last_error()};
    }
    if (take_failure(Call::remove_link)) {
        return {Step::remove, seams().failure};
    }
    if (take_failure(Call::remove_linked_directory)) {
        return {Step::remove_directory, seams().failure};
    }
    if (!S_ISLNK(status.st_mode)) {
        return {Step::read, SystemError::posix(EINVAL)}; // as readlink() reports
    }
    return {Step::remove, unlink(place, 0)};
}

} // namespace platform
