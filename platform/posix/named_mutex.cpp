#include "platform/named_mutex.h"

#include <atomic>
#include <cerrno>
#include <list>
#include <mutex>
#include <pthread.h>
#include <sys/stat.h>
#include <utility>

#include "platform/posix/descriptor.h"
#include "platform/posix/mutex_object.h"
#include "platform/seams.h"

namespace platform {
namespace {

SystemError last_error() {
    return SystemError::posix(errno);
}

/// The one mapping of a mutex in this process. The list of robust mutexes that a thread holds
/// leads through the mapping that it locked by, so it must not go before the lock does, also when
/// the same thread holds the mutex by another object.
struct MappedMutex {
    SharedMutex* shared = nullptr;
    dev_t device = 0;
    ino_t inode = 0;
    int users = 0;             ///< NamedMutex objects
    std::atomic<int> holds{0}; ///< locks not yet released
};

class MappedMutexes {
  public:
    Result<MappedMutex*> attach(int descriptor) {
        struct stat status = {};
        if (::fstat(descriptor, &status) != 0) {
            return last_error();
        }
        const std::lock_guard guard(mutex_);
        for (MappedMutex& mapped : mapped_) {
            if (mapped.device == status.st_dev && mapped.inode == status.st_ino) {
                ++mapped.users;
                return &mapped;
            }
        }
        const auto shared = map_mutex_object(descriptor);
        if (!shared) {
            return shared.error();
        }
        MappedMutex& mapped = mapped_.emplace_back();
        mapped.shared = *shared;
        mapped.device = status.st_dev;
        mapped.inode = status.st_ino;
        mapped.users = 1;
        return &mapped;
    }

    void detach(MappedMutex* mapped) {
        const std::lock_guard guard(mutex_);
        if (--mapped->users == 0 && mapped->holds == 0) {
            unmap_mutex_object(mapped->shared);
            mapped_.remove_if([&](const MappedMutex& one) { return &one == mapped; });
        }
    }

    /// Never destroyed: static objects may let go of a mutex at the very end.
    static MappedMutexes& instance() {
        static MappedMutexes& mutexes = *new MappedMutexes;
        return mutexes;
    }

  private:
    std::mutex mutex_;
    std::list<MappedMutex> mapped_;
};

MappedMutex& mapped(void* state) {
    return *static_cast<MappedMutex*>(state);
}

} // namespace

SystemError NamedMutex::create(const std::string& name) {
    if (take_failure(Call::create_mutex)) {
        return seams().failure;
    }
    SystemError error = open_limited(name);
    // Opened before it is created: a sticky directory may refuse to create what another made.
    if (!error.is_not_found()) {
        return error;
    }
    error = create_mutex_object(mutex_object_name(name));
    return error ? error : open_limited(name);
}

SystemError NamedMutex::open_limited(const std::string& name) {
    const auto opened = open_mutex_object(mutex_object_name(name));
    if (!opened) {
        return opened.error();
    }
    const Descriptor descriptor(*opened);
    const auto attached = MappedMutexes::instance().attach(descriptor.get());
    state_ = attached ? *attached : nullptr;
    return attached.error();
}

SystemError NamedMutex::lock() {
    MappedMutex& own = mapped(state_);
    if (ACE_OS::mutex_lock(&own.shared->mutex) != 0) {
        if (errno != EOWNERDEAD) {
            return last_error();
        }
        // The holder died. It changed nothing but the file, which the next reader judges itself.
        const int error = ::pthread_mutex_consistent(&own.shared->mutex);
        if (error != 0) {
            return SystemError::posix(error);
        }
    }
    ++own.holds;
    return {};
}

SystemError NamedMutex::unlock() {
    MappedMutex& own = mapped(state_);
    if (ACE_OS::mutex_unlock(&own.shared->mutex) != 0) {
        return last_error();
    }
    --own.holds;
    return {};
}

SystemError NamedMutex::close() {
    // Other processes use the mutex itself, so it is never destroyed.
    if (void* state = std::exchange(state_, nullptr)) {
        MappedMutexes::instance().detach(static_cast<MappedMutex*>(state));
    }
    return {};
}

} // namespace platform
