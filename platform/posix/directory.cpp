#include "platform/directory.h"

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr unsigned int all_write_bits = 0222;
constexpr unsigned int looked_at =
    STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_ATIME | STATX_MTIME | STATX_CTIME | STATX_BTIME;

SystemError last_error() {
    return SystemError::posix(errno);
}

bool is_dot_or_dots(std::string_view name) {
    return name == "." || name == "..";
}

/// Nanoseconds; a time too far away wraps around.
std::int64_t nanoseconds(const statx_timestamp& time) {
    constexpr std::uint64_t per_second = 1'000'000'000;
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.tv_sec) * per_second +
                                     time.tv_nsec);
}

/// What the kernel says about a name without following it, in the one call; false when it is not
/// to be had.
bool look_at(int directory, const char* name, struct statx& answer) {
    return ::statx(directory, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, looked_at, &answer) == 0;
}

bool leads_to_directory(int directory, const char* name) {
    struct stat status = {};
    return ::fstatat(directory, name, &status, 0) == 0 && S_ISDIR(status.st_mode);
}

void fill(FileStatus& status, const struct statx& answer, std::string_view name) {
    status.is_read_only = (answer.stx_mode & all_write_bits) == 0;
    status.is_hidden = name.starts_with('.') && !is_dot_or_dots(name);
    status.size = answer.stx_size;
    status.accessed = nanoseconds(answer.stx_atime);
    status.modified = nanoseconds(answer.stx_mtime);
    status.created = (answer.stx_mask & STATX_BTIME) != 0
                         ? nanoseconds(answer.stx_btime)
                         : std::min(status.modified, nanoseconds(answer.stx_ctime));
}

} // namespace

Result<FileStatus> file_status(const std::string& path) {
    struct statx answer; // the kernel fills it
    if (!look_at(AT_FDCWD, path.c_str(), answer)) {
        return last_error();
    }
    FileStatus status;
    status.is_link = S_ISLNK(answer.stx_mode);
    status.is_directory =
        S_ISDIR(answer.stx_mode) || (status.is_link && leads_to_directory(AT_FDCWD, path.c_str()));
    fill(status, answer, std::string_view(path).substr(path.rfind('/') + 1));
    return status;
}

struct DirectoryReader::State {
    State(int opened, const DirectoryReader* above) noexcept
        : descriptor(opened)
        , parent(above) {}

    bool is_same_directory(const struct stat& other) const;
    Result<bool> step(DirectoryReader& reader);

    Descriptor descriptor;
    const DirectoryReader* parent;
    const dirent64* entry = nullptr;
    bool is_link = false;
    std::size_t position = 0; ///< of the entry behind this one
    std::size_t filled = 0;
    alignas(dirent64) char buffer[32768]; // NOLINT: the kernel fills it before it is read
};

bool DirectoryReader::State::is_same_directory(const struct stat& other) const {
    struct stat own = {};
    return ::fstat(descriptor.get(), &own) == 0 && own.st_dev == other.st_dev &&
           own.st_ino == other.st_ino;
}

/// Comes to the next entry, on which the reader then stands.
Result<bool> DirectoryReader::State::step(DirectoryReader& reader) {
    if (position == filled) {
        const ssize_t count = ::getdents64(descriptor.get(), buffer, sizeof(buffer));
        if (count < 0 && errno != ENOENT) { // a directory removed meanwhile has no more entries
            return last_error();
        }
        position = 0;
        filled = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        if (filled == 0) {
            return false;
        }
    }
    entry = reinterpret_cast<const dirent64*>(buffer + position);
    position += entry->d_reclen;
    reader.name_ = entry->d_name;
    is_link = entry->d_type == DT_LNK;
    reader.is_directory_ = entry->d_type == DT_DIR;
    if (entry->d_type == DT_UNKNOWN) {
        struct statx answer; // the kernel fills it
        const bool known = look_at(descriptor.get(), entry->d_name, answer);
        is_link = known && S_ISLNK(answer.stx_mode);
        reader.is_directory_ = known && S_ISDIR(answer.stx_mode);
    }
    if (is_link) {
        reader.is_directory_ = leads_to_directory(descriptor.get(), entry->d_name);
    }
    return true;
}

DirectoryReader::DirectoryReader() noexcept = default;
DirectoryReader::~DirectoryReader() = default;

Result<bool> DirectoryReader::open(const std::string& path, const DirectoryReader* parent) {
    if (take_failure(Call::open_directory)) {
        return seams().failure;
    }
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const bool by_parent = parent != nullptr && parent->is_open();
    const bool by_link = by_parent && parent->state_->is_link;
    // What was no link when it was listed is not followed when it has become one.
    const int descriptor =
        by_parent ? ::openat(parent->state_->descriptor.get(), parent->state_->entry->d_name,
                             by_link ? flags : flags | O_NOFOLLOW)
                  : ::open(path.c_str(), flags);
    if (descriptor < 0) {
        return last_error();
    }
    state_ = std::make_unique<State>(descriptor, by_parent ? parent : nullptr);
    struct stat own = {};
    if (by_link && ::fstat(descriptor, &own) == 0) {
        for (const DirectoryReader* above = parent; above != nullptr && above->is_open();
             above = above->state_->parent) {
            if (above->state_->is_same_directory(own)) {
                return false;
            }
        }
    }
    const Result<bool> found = state_->step(*this);
    if (!found) {
        state_.reset();
    }
    return found;
}

Result<bool> DirectoryReader::next() {
    if (take_failure(Call::read_directory)) {
        return seams().failure;
    }
    return state_->step(*this);
}

SystemError DirectoryReader::close() {
    const bool fails = take_failure(Call::close_directory);
    const int answer = ::close(state_->descriptor.release());
    const SystemError error = fails ? seams().failure : answer != 0 ? last_error() : SystemError();
    state_.reset();
    return error;
}

const void* DirectoryReader::handle() const noexcept {
    const std::intptr_t number = is_open() ? state_->descriptor.get() : -1;
    return reinterpret_cast<const void*>(number); // NOLINT(performance-no-int-to-ptr): only shown
}

std::basic_string_view<NameUnit> DirectoryReader::native_name() const noexcept {
    return name_;
}

FileStatus DirectoryReader::status() const {
    FileStatus status;
    status.is_directory = is_directory_;
    status.is_link = state_->is_link;
    struct statx answer; // the kernel fills it
    if (look_at(state_->descriptor.get(), state_->entry->d_name, answer)) {
        fill(status, answer, name_);
    }
    return status;
}

} // namespace platform
