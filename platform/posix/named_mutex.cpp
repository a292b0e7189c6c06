#include "platform/named_mutex.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <memory>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ace/OS_NS_Thread.h>

#include "platform/posix/mutex_object.h"
#include "platform/seams.h"

namespace platform {
namespace {

/// What the shared memory object holds.
struct SharedMutex {
    std::array<char, 16> mark;
    ACE_mutex_t mutex;
};

constexpr std::array<char, 16> mark_of_a_mutex = {'o', 'r', 'v', 'a', '-', 'm',
                                                  'u', 't', 'e', 'x', '-', '1'};

SystemError last_error() {
    return SystemError::posix(errno);
}

class Descriptor {
  public:
    explicit Descriptor(int descriptor)
        : descriptor_(descriptor) {}
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    ~Descriptor() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    int get() const noexcept { return descriptor_; }

  private:
    int descriptor_;
};

Result<SharedMutex*> map(int descriptor) {
    void* memory =
        ::mmap(nullptr, sizeof(SharedMutex), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) {
        return last_error();
    }
    return static_cast<SharedMutex*>(memory);
}

void unmap(SharedMutex* shared) {
    ::munmap(shared, sizeof(SharedMutex));
}

/// Maps the object that stands under the name; an object that is no mutex of ours is refused.
Result<SharedMutex*> open_existing(const std::string& object) {
    const Descriptor descriptor(::shm_open(object.c_str(), O_RDWR | O_CLOEXEC, 0));
    struct stat status = {};
    if (descriptor.get() < 0 || ::fstat(descriptor.get(), &status) != 0) {
        return last_error();
    }
    if (status.st_size != static_cast<off_t>(sizeof(SharedMutex))) {
        return SystemError::posix(EINVAL);
    }
    auto shared = map(descriptor.get());
    if (shared && (*shared)->mark != mark_of_a_mutex) {
        unmap(*shared);
        return SystemError::posix(EINVAL);
    }
    return shared;
}

SystemError initialise(SharedMutex& shared) {
    pthread_mutexattr_t attributes;
    int error = ::pthread_mutexattr_init(&attributes);
    if (error != 0) {
        return SystemError::posix(error);
    }
    ::pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    const int result = ACE_OS::mutex_init(&shared.mutex, USYNC_PROCESS,
                                          static_cast<const char*>(nullptr), &attributes);
    const SystemError failure = result == 0 ? SystemError() : last_error();
    ::pthread_mutexattr_destroy(&attributes);
    shared.mark = mark_of_a_mutex;
    return failure;
}

/// Makes a whole object under a name of its own, then gives it the common name unless another
/// process was first. So an object under the common name is always whole.
SystemError publish(const std::string& object) {
    const std::string own = object + "." + std::to_string(::getpid()) + "." +
                            std::to_string(reinterpret_cast<std::uintptr_t>(&object));
    const std::string own_file = mutex_directory + own;
    ::unlink(own_file.c_str()); // left by a process that died here
    const Descriptor descriptor(
        ::shm_open(own.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (descriptor.get() < 0 || ::ftruncate(descriptor.get(), sizeof(SharedMutex)) != 0) {
        return last_error();
    }
    auto shared = map(descriptor.get());
    SystemError error = shared.error();
    if (!error) {
        error = initialise(**shared);
        unmap(*shared);
    }
    // Every account must be able to wait and to release, whatever the umask of the first one.
    if (!error && ::fchmod(descriptor.get(), 0666) != 0) {
        error = last_error();
    }
    if (!error && ::link(own_file.c_str(), (mutex_directory + object).c_str()) != 0 &&
        errno != EEXIST) {
        error = last_error();
    }
    ::unlink(own_file.c_str());
    return error;
}

ACE_mutex_t* mutex_of(void* state) {
    return &static_cast<SharedMutex*>(state)->mutex;
}

} // namespace

std::string mutex_object_name(const std::string& name) {
    return "/" + name.substr(name.rfind('\\') + 1) + seams().mutex_name_suffix;
}

SystemError NamedMutex::create(const std::string& name) {
    const std::string object = mutex_object_name(name);
    // Opened before it is created: a sticky directory may refuse to create what another made.
    auto shared = open_existing(object);
    if (!shared && shared.error().is_not_found()) {
        if (const SystemError error = publish(object)) {
            return error;
        }
        shared = open_existing(object);
    }
    state_ = shared ? *shared : nullptr;
    return shared.error();
}

SystemError NamedMutex::open_limited(const std::string& name) {
    auto shared = open_existing(mutex_object_name(name));
    state_ = shared ? *shared : nullptr;
    return shared.error();
}

SystemError NamedMutex::lock() {
    if (ACE_OS::mutex_lock(mutex_of(state_)) == 0) {
        return {};
    }
    if (errno != EOWNERDEAD) {
        return last_error();
    }
    // The holder died. It changed nothing but the file, which the next reader judges by itself.
    const int error = ::pthread_mutex_consistent(mutex_of(state_));
    return error == 0 ? SystemError() : SystemError::posix(error);
}

SystemError NamedMutex::unlock() {
    return ACE_OS::mutex_unlock(mutex_of(state_)) == 0 ? SystemError() : last_error();
}

SystemError NamedMutex::close() {
    // Other processes use the mutex itself, so it is never destroyed.
    if (state_ != nullptr) {
        unmap(static_cast<SharedMutex*>(std::exchange(state_, nullptr)));
    }
    return {};
}

} // namespace platform
