#include "platform/posix/mutex_object.h"

#include <cerrno>
#include <fcntl.h>
#include <pthread.h>
#include <random>
#include <sys/mman.h>
#include <sys/stat.h>

#include "platform/posix/descriptor.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr std::array<char, 16> mark_of_a_mutex = {'o', 'r', 'v', 'a', '-', 'm',
                                                  'u', 't', 'e', 'x', '-', '1'};

SystemError last_error() {
    return SystemError::posix(errno);
}

Result<SharedMutex*> map(int descriptor) {
    void* memory =
        ::mmap(nullptr, sizeof(SharedMutex), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) {
        return last_error();
    }
    return static_cast<SharedMutex*>(memory);
}

SystemError initialise(SharedMutex& shared) {
    pthread_mutexattr_t attributes;
    int error = ::pthread_mutexattr_init(&attributes);
    if (error != 0) {
        return SystemError::posix(error);
    }
    ::pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    ::pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    ::pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_RECURSIVE);
    const int result = ACE_OS::mutex_init(&shared.mutex, USYNC_PROCESS,
                                          static_cast<const char*>(nullptr), &attributes);
    const SystemError failure = result == 0 ? SystemError() : last_error();
    ::pthread_mutexattr_destroy(&attributes);
    shared.mark = mark_of_a_mutex;
    return failure;
}

/// Gives an empty object its mutex, then its common name unless another process was first.
SystemError complete(int descriptor, const std::string& own_file, const std::string& object_file) {
    if (::ftruncate(descriptor, sizeof(SharedMutex)) != 0) {
        return last_error();
    }
    const auto shared = map(descriptor);
    if (!shared) {
        return shared.error();
    }
    const SystemError failure = initialise(**shared);
    unmap_mutex_object(*shared);
    if (failure) {
        return failure;
    }
    // Every account must be able to wait and to release, whatever the umask of the first one.
    if (::fchmod(descriptor, 0666) != 0) {
        return last_error();
    }
    return ::link(own_file.c_str(), object_file.c_str()) == 0 || errno == EEXIST ? SystemError()
                                                                                 : last_error();
}

} // namespace

std::string mutex_object_name(const std::string& name) {
    return "/" + name.substr(name.rfind('\\') + 1) + seams().mutex_name_suffix;
}

Result<int> open_mutex_object(const std::string& object) {
    const int descriptor = ::shm_open(object.c_str(), O_RDWR | O_CLOEXEC, 0);
    if (descriptor < 0) {
        return last_error();
    }
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0 ||
        status.st_size != static_cast<off_t>(sizeof(SharedMutex))) {
        ::close(descriptor);
        return SystemError::posix(EINVAL);
    }
    return descriptor;
}

SystemError create_mutex_object(const std::string& object) {
    std::random_device random;
    const std::string own =
        object + "." + std::to_string(random()) + "." + std::to_string(random());
    const Descriptor descriptor(
        ::shm_open(own.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
    if (descriptor.get() < 0) {
        return last_error();
    }
    const SystemError failure =
        complete(descriptor.get(), mutex_directory + own, mutex_directory + object);
    ::shm_unlink(own.c_str());
    return failure;
}

Result<SharedMutex*> map_mutex_object(int descriptor) {
    auto shared = map(descriptor);
    if (shared && (*shared)->mark != mark_of_a_mutex) {
        unmap_mutex_object(*shared);
        return SystemError::posix(EINVAL);
    }
    return shared;
}

void unmap_mutex_object(SharedMutex* shared) noexcept {
    ::munmap(shared, sizeof(SharedMutex));
}

} // namespace platform
