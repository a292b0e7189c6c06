#include "platform/posix/share_locks.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <initializer_list>
#include <random>
#include <sys/file.h>
#include <thread>

namespace platform {
namespace {

// What an opener does and denies is a lock on one byte, at a random place of the range that
// stands for it. The ranges lie beyond the end of any file.
constexpr off_t range_size = off_t{1} << 40;
constexpr off_t first_range = off_t{1} << 60;
constexpr off_t reads = first_range;
constexpr off_t writes = first_range + range_size;
constexpr off_t denies_reading = first_range + 2 * range_size;
constexpr off_t denies_writing = first_range + 3 * range_size;

constexpr std::chrono::milliseconds guard_patience(50);
constexpr std::chrono::microseconds guard_pause(200);

constexpr int attempts_to_find_a_free_byte = 100;

struct Role {
    bool applies;
    off_t range;          ///< where this opener says so
    off_t excluded_range; ///< where another opener says that it excludes this
};

/// EBADF: some network file systems want a writable descriptor for any flock().
bool has_no_locks(int error) {
    return error == ENOLCK || error == EOPNOTSUPP || error == ENOSYS || error == EINVAL ||
           error == EBADF;
}

/// Holds the file's flock() for the time of one test and set. Who holds it longer than our own
/// guards ever do is a stranger, and counts as an opener that shares nothing.
class Guard {
  public:
    explicit Guard(int descriptor)
        : descriptor_(descriptor) {
        const auto end = std::chrono::steady_clock::now() + guard_patience;
        while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
            error_ = errno;
            if (error_ == EINTR) {
                continue;
            }
            if (error_ != EWOULDBLOCK || std::chrono::steady_clock::now() >= end) {
                return;
            }
            std::this_thread::sleep_for(guard_pause);
        }
        error_ = 0;
    }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;
    ~Guard() {
        if (error_ == 0) {
            ::flock(descriptor_, LOCK_UN);
        }
    }

    int error() const noexcept { return error_; }

  private:
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

/// True when another opener has a lock in the range.
bool is_taken(int descriptor, off_t range) {
    struct flock lock = lock_of(F_WRLCK, range, range_size);
    return ::fcntl(descriptor, F_OFD_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
}

/// Locks a free byte of the range; EAGAIN when a stranger has locked it from end to end.
int take(int descriptor, short type, off_t range) {
    static thread_local std::mt19937_64 random(std::random_device{}());
    std::uniform_int_distribution<off_t> place(0, range_size - 1);
    for (int attempt = 0; attempt < attempts_to_find_a_free_byte; ++attempt) {
        struct flock lock = lock_of(type, range + place(random), 1);
        if (::fcntl(descriptor, F_OFD_SETLK, &lock) == 0) {
            return 0;
        }
        if (errno != EAGAIN && errno != EACCES) {
            return errno;
        }
    }
    return EAGAIN;
}

} // namespace

SystemError take_share_locks(int descriptor, FileAccess access, FileSharing sharing) {
    const Role roles[] = {
        {access != FileAccess::write, reads, denies_reading},
        {access != FileAccess::read, writes, denies_writing},
        {sharing == FileSharing::write || sharing == FileSharing::none, denies_reading, reads},
        {sharing == FileSharing::read || sharing == FileSharing::none, denies_writing, writes},
    };
    const Guard guard(descriptor);
    if (guard.error() != 0) {
        return has_no_locks(guard.error()) ? SystemError() : sharing_violation();
    }
    for (const Role& role : roles) {
        if (role.applies && is_taken(descriptor, role.excluded_range)) {
            return sharing_violation();
        }
    }
    // A lock to read needs a readable descriptor, a lock to write a writable one.
    const short type = access == FileAccess::read ? F_RDLCK : F_WRLCK;
    for (const Role& role : roles) {
        const int error = role.applies ? take(descriptor, type, role.range) : 0;
        if (error != 0) {
            return has_no_locks(error) ? SystemError() : sharing_violation();
        }
    }
    return {};
}

} // namespace platform
