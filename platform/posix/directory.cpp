#include "platform/directory.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/retry.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr unsigned int all_write_bits = 0222;
constexpr unsigned int looked_at =
    STATX_TYPE | STATX_MODE | STATX_SIZE | STATX_ATIME | STATX_MTIME | STATX_CTIME | STATX_BTIME;

bool is_dot_or_dots(std::string_view name) {
    return name == "." || name == "..";
}

/// Converts to nanoseconds. Times out of range wrap around.
std::int64_t nanoseconds(const statx_timestamp& time) {
    constexpr std::uint64_t per_second = 1'000'000'000;
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(time.tv_sec) * per_second +
                                     time.tv_nsec);
}

/// Gets the status of a name, without following links, in one call. Returns false on failure.
bool look_at(int directory, const char* name, struct statx& answer) {
    return ::statx(directory, name, AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, looked_at, &answer) == 0;
}

/// Returns whether a link leads to a directory. A link whose target is missing or inaccessible does
/// not; any other failure is an error, so that no tree is left out unnoticed.
Result<bool> leads_to_directory(int directory, const char* name) {
    const bool fails = take_failure(Call::follow_link);
    struct stat status = {};
    if (!fails && ::fstatat(directory, name, &status, 0) == 0) {
        return S_ISDIR(status.st_mode);
    }
    constexpr std::array<unsigned long, 5> nowhere{ENOENT, ENOTDIR, ELOOP, EACCES, ENAMETOOLONG};
    const SystemError error = fails ? seams().failure : last_error();
    if (std::find(nowhere.begin(), nowhere.end(), error.number()) != nowhere.end()) {
        return false;
    }
    return error;
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
    status.is_directory = S_ISDIR(answer.stx_mode);
    if (status.is_link) {
        const Result<bool> leads = leads_to_directory(AT_FDCWD, path.c_str());
        if (!leads) {
            return leads.error();
        }
        status.is_directory = *leads;
    }
    fill(status, answer, std::string_view(path).substr(path.rfind('/') + 1));
    return status;
}

struct DirectoryReader::State {
    explicit State(Descriptor& opened) noexcept
        : descriptor(opened.release()) {}

    Result<bool> step();
    Result<bool> fill_buffer();
    Result<bool> judge();

    Descriptor descriptor;
    const dirent64* entry = nullptr;
    std::string_view name;
    bool is_directory = false;
    bool is_link = false;
    std::size_t position = 0; ///< of the entry after this one
    std::size_t filled = 0;
    alignas(dirent64) char buffer[32768]; // NOLINT: the kernel fills it before it is read
};

/// Moves to the next entry.
Result<bool> DirectoryReader::State::step() {
    if (position == filled) {
        const Result<bool> more = fill_buffer();
        if (!more || !*more) {
            return more;
        }
    }
    entry = reinterpret_cast<const dirent64*>(buffer + position);
    position += entry->d_reclen;
    name = entry->d_name;
    is_link = entry->d_type == DT_LNK;
    is_directory = entry->d_type == DT_DIR;
    return is_link || entry->d_type == DT_UNKNOWN ? judge() : true;
}

/// Reads the next entries. Returns false if there are none.
Result<bool> DirectoryReader::State::fill_buffer() {
    const ssize_t count =
        retry([&] { return ::getdents64(descriptor.get(), buffer, sizeof(buffer)); });
    if (count < 0 && errno != ENOENT) { // a directory that has been removed has no more entries
        return last_error();
    }
    position = 0;
    filled = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    return filled != 0;
}

/// Determines the kind of an entry if the directory does not say. Returns true or an error.
Result<bool> DirectoryReader::State::judge() {
    if (entry->d_type == DT_UNKNOWN) {
        struct statx answer; // the kernel fills it
        const bool known = look_at(descriptor.get(), entry->d_name, answer);
        is_link = known && S_ISLNK(answer.stx_mode);
        is_directory = known && S_ISDIR(answer.stx_mode);
    }
    if (is_link) {
        const Result<bool> leads = leads_to_directory(descriptor.get(), entry->d_name);
        if (!leads) {
            return leads;
        }
        is_directory = *leads;
    }
    return true;
}

DirectoryReader::DirectoryReader() noexcept = default;
DirectoryReader::~DirectoryReader() = default;

Result<bool> DirectoryReader::open(const std::string& path, const DirectoryReader* parent) {
    PLATFORM_SEAM(open_directory);
    constexpr int flags = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
    const State* const above = parent != nullptr ? parent->state_.get() : nullptr;
    // An entry that was not a link when it was listed is not followed if it has become one.
    Descriptor opened(retry([&] {
        return above != nullptr ? ::openat(above->descriptor.get(), above->entry->d_name,
                                           above->is_link ? flags : flags | O_NOFOLLOW)
                                : ::open(path.c_str(), flags);
    }));
    if (opened.get() < 0) {
        return last_error();
    }
    state_ = std::make_unique<State>(opened);
    const Result<bool> found = state_->step();
    if (!found) {
        state_.reset();
    }
    return found;
}

Result<bool> DirectoryReader::next() {
    PLATFORM_SEAM(read_directory);
    return state_->step();
}

SystemError DirectoryReader::close() {
    const bool fails = take_failure(Call::close_directory);
    const SystemError error = error_of(::close(state_->descriptor.release()));
    state_.reset();
    return fails ? seams().failure : error;
}

const void* DirectoryReader::handle() const noexcept {
    const std::intptr_t number = is_open() ? state_->descriptor.get() : -1;
    return reinterpret_cast<const void*>(number); // NOLINT(performance-no-int-to-ptr): only shown
}

std::optional<DirectoryIdentity> DirectoryReader::identity() const noexcept {
    struct stat status = {};
    if (::fstat(state_->descriptor.get(), &status) != 0) {
        return std::nullopt;
    }
    return DirectoryIdentity{status.st_dev, status.st_ino};
}

std::string_view DirectoryReader::name() const noexcept {
    return state_->name;
}

std::basic_string_view<NameUnit> DirectoryReader::native_name() const noexcept {
    return state_->name;
}

bool DirectoryReader::is_directory() const noexcept {
    return state_->is_directory;
}

bool DirectoryReader::is_link() const noexcept {
    return state_->is_link;
}

FileStatus DirectoryReader::status() const {
    FileStatus status;
    status.is_directory = state_->is_directory;
    status.is_link = state_->is_link;
    struct statx answer; // the kernel fills it
    if (look_at(state_->descriptor.get(), state_->entry->d_name, answer)) {
        fill(status, answer, state_->name);
    }
    return status;
}

} // namespace platform
