#include "platform/named_mutex.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <list>
#include <mutex>
#include <new>

#include <ace/OS_NS_Thread.h>
#include <pthread.h>
#include <sys/file.h>
#include <unistd.h>

#include "platform/posix/last_error.h"
#include "platform/posix/lock_file.h"
#include "platform/posix/retry.h"
#include "platform/seams.h"

namespace platform {
namespace {

/// One mutex as this process sees it: the threads exclude each other by ACE's mutex, and the thread
/// that has it excludes other processes by a flock() of the lock file.
struct LockFile {
    explicit LockFile(std::string file)
        : path(std::move(file)) {
        reset();
    }

    /// As a process has it that holds nothing.
    void reset() {
        ACE_OS::thread_mutex_init(&mutex, PTHREAD_MUTEX_RECURSIVE);
        holds = 0;
        descriptor = -1;
    }

    const std::string path;
    ACE_thread_mutex_t mutex;
    int holds;      ///< locks of the thread that has the mutex
    int descriptor; ///< of the lock file while it is held or waited for, else -1
};

std::atomic<int> g_highest_descriptor{-1};

/// All mutexes that this process has used. Never destroyed: static objects may release a mutex at
/// the very end. Its guard is held while a descriptor changes, and by fork(), so that a child knows
/// and closes each descriptor that it has inherited; else it would hold its parent's locks.
class LockFiles {
  public:
    static LockFiles& instance() {
        static LockFiles& files = *new LockFiles;
        return files;
    }

    LockFile& find(const std::string& path) {
        const std::lock_guard guard(guard_);
        for (LockFile& file : files_) {
            if (file.path == path) {
                return file;
            }
        }
        return files_.emplace_back(path);
    }

    SystemError open(LockFile& file) {
        const std::lock_guard guard(guard_);
        const Result<int> opened = open_lock_file(file.path);
        file.descriptor = opened ? *opened : -1;
        note_highest();
        return opened.error();
    }

    /// Unlocked before it is closed: a child that another thread forks may have a copy.
    void close(LockFile& file) {
        const std::lock_guard guard(guard_);
        ::flock(file.descriptor, LOCK_UN);
        ::close(file.descriptor);
        file.descriptor = -1;
        note_highest();
    }

  private:
    LockFiles() {
        if (::pthread_atfork([] { instance().guard_.lock(); }, [] { instance().guard_.unlock(); },
                             [] { instance().start_anew(); }) != 0) {
            throw std::bad_alloc(); // its only failure
        }
    }

    void start_anew() {
        for (LockFile& file : files_) {
            if (file.descriptor >= 0) {
                ::close(file.descriptor); // without unlocking: the lock is the parent's
            }
            file.reset();
        }
        note_highest();
        guard_.unlock();
    }

    void note_highest() {
        int highest = -1;
        for (const LockFile& file : files_) {
            highest = std::max(highest, file.descriptor);
        }
        g_highest_descriptor = highest;
    }

    std::mutex guard_;
    std::list<LockFile> files_;
};

LockFile& file_of(void* state) {
    return *static_cast<LockFile*>(state);
}

/// Excludes the other processes. A file that was removed or exchanged before it was locked excludes
/// nobody, so the one that has the name now is locked instead.
SystemError lock_file(LockFile& file) {
    for (;;) {
        if (const SystemError error = LockFiles::instance().open(file)) {
            return error;
        }
        const bool locked = retry([&] { return ::flock(file.descriptor, LOCK_EX); }) == 0;
        const Result<bool> named = locked ? is_named(file.descriptor, file.path) : last_error();
        if (named && *named) {
            return {};
        }
        LockFiles::instance().close(file);
        if (!named) {
            return named.error();
        }
    }
}

} // namespace

int highest_lock_descriptor() noexcept {
    return g_highest_descriptor;
}

SystemError NamedMutex::create(const std::string& name) {
    if (take_failure(Call::create_mutex)) {
        return seams().failure;
    }
    const auto path = lock_file_path(name);
    const auto opened = path ? open_lock_file(*path) : path.error();
    if (opened) {
        ::close(*opened); // it is opened anew for each lock
        state_ = &LockFiles::instance().find(*path);
    }
    return opened.error();
}

SystemError NamedMutex::open_limited(const std::string& name) {
    const auto path = lock_file_path(name);
    const auto opened = path ? open_existing_lock_file(*path) : path.error();
    if (opened) {
        ::close(*opened);
        state_ = &LockFiles::instance().find(*path);
    }
    return opened.error();
}

SystemError NamedMutex::lock() {
    if (take_failure(Call::lock_mutex)) {
        return seams().failure;
    }
    LockFile& file = file_of(state_);
    if (ACE_OS::thread_mutex_lock(&file.mutex) != 0) {
        return last_error();
    }
    const SystemError error = file.holds == 0 ? lock_file(file) : SystemError();
    if (error) {
        ACE_OS::thread_mutex_unlock(&file.mutex);
        return error;
    }
    ++file.holds;
    return {};
}

SystemError NamedMutex::unlock() {
    const bool fails = take_failure(Call::unlock_mutex);
    LockFile& file = file_of(state_);
    if (ACE_OS::thread_mutex_trylock(&file.mutex) != 0) {
        return SystemError::posix(EPERM); // another thread has it
    }
    const bool held = file.holds != 0;
    if (held) {
        if (--file.holds == 0) {
            LockFiles::instance().close(file);
        }
        ACE_OS::thread_mutex_unlock(&file.mutex);
    }
    ACE_OS::thread_mutex_unlock(&file.mutex);
    return fails ? seams().failure : held ? SystemError() : SystemError::posix(EPERM);
}

SystemError NamedMutex::close() {
    state_ = nullptr;
    return {};
}

} // namespace platform
