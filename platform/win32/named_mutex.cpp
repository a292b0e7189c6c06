#include "platform/named_mutex.h"

#include <ace/OS_NS_Thread.h>
#include <cerrno>
#include <memory>
#include <utility>

#include "platform/seams.h"
#include "platform/win32/handle.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"

namespace platform {
namespace {

SystemError ace_error() {
    return SystemError::windows(static_cast<unsigned long>(errno));
}

ACE_mutex_t& mutex_of(void* state) {
    return *static_cast<ACE_mutex_t*>(state);
}

} // namespace

SystemError NamedMutex::create(const std::string& name) {
    PLATFORM_SEAM(create_mutex);
    auto mutex = std::make_unique<ACE_mutex_t>();
    const std::string own_name = name + seams().mutex_name_suffix;
    if (ACE_OS::mutex_init(mutex.get(), USYNC_PROCESS, own_name.c_str(), nullptr, nullptr, 0) !=
        0) {
        return ace_error();
    }
    state_ = mutex.release();
    return {};
}

SystemError NamedMutex::open_limited(const std::string& name) {
    // ACE always requests all rights, so its object is composed here.
    Handle handle(::OpenMutexW(SYNCHRONIZE, FALSE, wide(name + seams().mutex_name_suffix).c_str()));
    if (!handle) {
        return last_error();
    }
    auto mutex = std::make_unique<ACE_mutex_t>();
    mutex->type_ = USYNC_PROCESS;
    mutex->proc_mutex_ = handle.release();
    state_ = mutex.release();
    return {};
}

SystemError NamedMutex::lock() {
    PLATFORM_SEAM(lock_mutex);
    return ACE_OS::mutex_lock(&mutex_of(state_)) == 0 ? SystemError() : ace_error();
}

SystemError NamedMutex::unlock() {
    const bool fails = take_failure(Call::unlock_mutex);
    const bool unlocked = ACE_OS::mutex_unlock(&mutex_of(state_)) == 0;
    return fails ? seams().failure : unlocked ? SystemError() : ace_error();
}

SystemError NamedMutex::close() {
    const std::unique_ptr<ACE_mutex_t> mutex(
        static_cast<ACE_mutex_t*>(std::exchange(state_, nullptr)));
    return !mutex || ACE_OS::mutex_destroy(mutex.get()) == 0 ? SystemError() : ace_error();
}

} // namespace platform
