#include "platform/posix/share_locks.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <fcntl.h>
#include <random>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "platform/posix/last_error.h"
#include "platform/posix/retry.h"

namespace platform {
namespace {

// Each thing that an opener does or denies is a lock on one byte, at a place of its own in a range
// for that thing. The ranges are beyond the end of any file.
constexpr off_t range_size = off_t{1} << 40;
constexpr off_t first_range = off_t{1} << 60;
constexpr off_t reads = first_range;
constexpr off_t writes = first_range + range_size;
constexpr off_t denies_reading = first_range + 2 * range_size;
constexpr off_t denies_writing = first_range + 3 * range_size;

constexpr std::chrono::milliseconds guard_patience(500);
constexpr std::chrono::microseconds guard_pause(200);

constexpr int attempts_to_find_a_free_byte = 100;

struct Role {
    bool applies;
    off_t range;          ///< of the locks of openers with this role
    off_t excluded_range; ///< of the locks of openers that exclude it
};

/// EBADF: some network file systems need a writable descriptor for any flock().
bool has_no_locks(int error) {
    return error == ENOLCK || error == EOPNOTSUPP || error == ENOSYS || error == EINVAL ||
           error == EBADF;
}

/// Holds the file's flock() during one test and set. A process that holds it longer does not use
/// this library and counts as an opener that shares nothing.
class Guard {
  public:
    explicit Guard(int descriptor)
        : descriptor_(descriptor) {
        const auto end = std::chrono::steady_clock::now() + guard_patience;
        while (!try_to_lock() && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(guard_pause);
        }
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() {
        if (error_ == 0) {
            ::flock(descriptor_, LOCK_UN);
        }
    }

    int error() const noexcept { return error_ == EWOULDBLOCK ? EBUSY : error_; }

  private:
    /// False if another try may succeed.
    bool try_to_lock() {
        const int answer = retry([&] { return ::flock(descriptor_, LOCK_EX | LOCK_NB); });
        error_ = answer == 0 ? 0 : errno;
        return error_ != EWOULDBLOCK;
    }

    int descriptor_;
    int error_ = 0;
};

struct flock lock_of(short type, off_t start, off_t length) {
    struct flock lock = {};
    lock.l_type = type;
    lock.l_whence = SEEK_SET;
    lock.l_start = start;
    lock.l_len = length;
    return lock;
}

int lock_call(int descriptor, int command, struct flock& lock) {
    return retry([&] { return ::fcntl(descriptor, command, &lock); }) == 0 ? 0 : errno;
}

/// EBUSY if another opener has a lock in the range, 0 if none has, else the error of the query.
int look_for_others(int descriptor, off_t range) {
    struct flock lock = lock_of(F_WRLCK, range, range_size);
    const int error = lock_call(descriptor, F_OFD_GETLK, lock);
    return error == 0 && lock.l_type != F_UNLCK ? EBUSY : error;
}

/// A place in a range that no other open is likely to use.
off_t next_place() {
    static std::atomic<std::uint64_t> count{std::random_device{}()};
    const auto seed = (static_cast<std::uint64_t>(::getpid()) << 32) + ++count;
    return static_cast<off_t>(seed * 0x9E3779B97F4A7C15U >> 24); // the 40 bits that vary most
}

/// Locks a free byte of the range. EBUSY if another program has locked the whole range.
int take(int descriptor, short type, off_t range) {
    for (int attempt = 0; attempt < attempts_to_find_a_free_byte; ++attempt) {
        struct flock lock = lock_of(type, range + next_place(), 1);
        const int error = lock_call(descriptor, F_OFD_SETLK, lock);
        if (error != EAGAIN) { // another opener has the byte
            return error;
        }
    }
    return EBUSY;
}

int enter(int descriptor, FileAccess access, FileSharing sharing) {
    const Role roles[] = {
        {access != FileAccess::write, reads, denies_reading},
        {access != FileAccess::read, writes, denies_writing},
        {sharing == FileSharing::write || sharing == FileSharing::none, denies_reading, reads},
        {sharing == FileSharing::read || sharing == FileSharing::none, denies_writing, writes},
    };
    const Guard guard(descriptor);
    int error = guard.error();
    for (const Role& role : roles) {
        if (role.applies && error == 0) {
            error = look_for_others(descriptor, role.excluded_range);
        }
    }
    // A read lock needs a readable descriptor, a write lock a writable one.
    const short type = access == FileAccess::read ? F_RDLCK : F_WRLCK;
    for (const Role& role : roles) {
        if (role.applies && error == 0) {
            error = take(descriptor, type, role.range);
        }
    }
    return error;
}

} // namespace

SystemError take_share_locks(int descriptor, FileAccess access, FileSharing sharing) {
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return last_error();
    }
    if (!S_ISREG(status.st_mode)) {
        return {};
    }
    const int error = enter(descriptor, access, sharing);
    if (error == EBUSY) {
        return sharing_violation();
    }
    return error == 0 || has_no_locks(error) ? SystemError() : SystemError::posix(error);
}

void release_share_locks(int descriptor) noexcept {
    struct flock all = lock_of(F_UNLCK, first_range, 4 * range_size);
    lock_call(descriptor, F_OFD_SETLK, all);
}

} // namespace platform
