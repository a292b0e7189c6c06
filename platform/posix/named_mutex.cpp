#include "platform/named_mutex.h"

#include <algorithm>
#include <cerrno>
#include <list>
#include <mutex>
#include <new>
#include <utility>

#include <ace/OS_NS_Thread.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/lock_file.h"
#include "platform/posix/opening.h"
#include "platform/posix/retry.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr const char* lock_directories[] = {"/run/lock", "/var/tmp", "/tmp"};
constexpr mode_t sticky_for_all = S_ISVTX | S_IWOTH;
constexpr mode_t readable_for_all = 0444; // suffices for flock()

Result<int> open_existing(const std::string& path) {
    constexpr int flags = O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK;
    Descriptor file(retry([&] { return ::open(path.c_str(), flags); }));
    struct stat status = {};
    if (file.get() < 0 || ::fstat(file.get(), &status) != 0) {
        return last_error();
    }
    return S_ISREG(status.st_mode) ? Result<int>(file.release()) : SystemError::posix(EINVAL);
}

/// Opens or creates a lock file. Opens first, since in a sticky directory O_CREAT may fail for the
/// existing file of another account.
Result<int> open_lock_file(const std::string& path, bool mayCreate) {
    for (;;) {
        const Result<int> opened = open_existing(path);
        if (!opened.error().is_not_found() || !mayCreate) {
            return opened;
        }
        const SystemError error = create_with_mode(path, readable_for_all);
        if (error && !error.is_already_exists()) {
            return error;
        }
    }
}

/// True if the path still names the open file.
Result<bool> is_named(int descriptor, const std::string& path) {
    struct stat opened = {};
    struct stat named = {};
    if (::fstat(descriptor, &opened) != 0 || ::lstat(path.c_str(), &named) != 0) {
        const SystemError error = last_error();
        return error.is_not_found() ? Result<bool>(false) : error;
    }
    return opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

/// A mutex as this process sees it: its threads exclude each other by ACE's mutex, and the thread
/// that has that excludes other processes by a flock() of the lock file.
struct LockFile {
    explicit LockFile(std::string file)
        : path(std::move(file)) {
        reset();
    }

    /// Puts it into the state of a process that holds nothing.
    void reset() {
        ACE_OS::thread_mutex_init(&mutex, PTHREAD_MUTEX_RECURSIVE);
        holds = 0;
        descriptor = -1;
    }
    void unlock() { ACE_OS::thread_mutex_unlock(&mutex); }

    const std::string path;
    ACE_thread_mutex_t mutex;
    int holds;      ///< locks of the thread that has the mutex
    int descriptor; ///< of the lock file while it is held or waited for, else -1
};

/// Like std::mutex, but never throws: locking a mutex of this kind cannot fail, and releasing the
/// named mutex in a destructor must not end the process.
class ThreadMutex {
  public:
    void lock() noexcept { ::pthread_mutex_lock(&mutex_); }
    void unlock() noexcept { ::pthread_mutex_unlock(&mutex_); }

  private:
    pthread_mutex_t mutex_ = PTHREAD_MUTEX_INITIALIZER;
};

/// All mutexes that this process has used. Never destroyed, since static destructors may release a
/// mutex. fork() waits for the guard, so a child knows every inherited descriptor and closes it; it
/// would keep its parent's lock otherwise.
class LockFiles {
  public:
    static LockFiles& instance() {
        static LockFiles& files = *new LockFiles;
        return files;
    }

    LockFile& find(const std::string& path) {
        const std::lock_guard<ThreadMutex> guard(guard_);
        const auto found = std::ranges::find(files_, path, &LockFile::path);
        return found != files_.end() ? *found : files_.emplace_back(path);
    }

    SystemError open(LockFile& file) {
        const std::lock_guard<ThreadMutex> guard(guard_);
        const Result<int> opened = open_lock_file(file.path, true);
        file.descriptor = opened ? *opened : -1;
        return opened.error();
    }

    /// Unlocks before closing, since a child that another thread is forking may have a copy.
    void close(LockFile& file) {
        const std::lock_guard<ThreadMutex> guard(guard_);
        ::flock(file.descriptor, LOCK_UN);
        ::close(std::exchange(file.descriptor, -1));
    }

    int highest_descriptor() {
        const std::lock_guard<ThreadMutex> guard(guard_);
        const auto highest = std::ranges::max_element(files_, {}, &LockFile::descriptor);
        return highest != files_.end() ? highest->descriptor : -1;
    }

  private:
    LockFiles() {
        if (::pthread_atfork([] { instance().guard_.lock(); }, [] { instance().guard_.unlock(); },
                             [] { instance().start_anew(); }) != 0) {
            throw std::bad_alloc(); // its only failure
        }
    }

    /// Called in a child. Unlocks nothing: the locks are its parent's.
    void start_anew() {
        for (LockFile& file : files_) {
            ::close(file.descriptor);
            file.reset();
        }
        guard_.unlock();
    }

    ThreadMutex guard_;
    std::list<LockFile> files_;
};

/// Excludes other processes. A file that was removed or replaced before it was locked excludes
/// nobody, so the file that has the name now is locked instead.
SystemError exclude_processes(LockFile& file) {
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

/// Looks up a mutex whose lock file can be opened. Each lock opens the file anew.
SystemError attach(const std::string& name, bool mayCreate, void*& state) {
    const auto path = lock_file_path(name);
    const auto opened = path ? open_lock_file(*path, mayCreate) : path.error();
    const Descriptor file(opened ? *opened : -1);
    if (opened) {
        state = &LockFiles::instance().find(*path);
    }
    return opened.error();
}

} // namespace

Result<std::string> lock_file_path(const std::string& mutexName) {
    for (const char* directory : lock_directories) {
        struct stat status = {};
        if (::stat(directory, &status) != 0) {
            if (!last_error().is_not_found()) {
                return last_error(); // the next directory would mean another mutex
            }
        } else if ((status.st_mode & sticky_for_all) == sticky_for_all) {
            return std::string(directory) + '/' + mutexName.substr(mutexName.rfind('\\') + 1) +
                   seams().mutex_name_suffix;
        }
    }
    return SystemError::posix(ENOENT);
}

int highest_lock_descriptor() {
    return LockFiles::instance().highest_descriptor();
}

SystemError NamedMutex::create(const std::string& name) {
    PLATFORM_SEAM(create_mutex);
    return attach(name, true, state_);
}

SystemError NamedMutex::open_limited(const std::string& name) {
    return attach(name, false, state_);
}

SystemError NamedMutex::lock() {
    PLATFORM_SEAM(lock_mutex);
    LockFile& file = *static_cast<LockFile*>(state_);
    if (ACE_OS::thread_mutex_lock(&file.mutex) != 0) {
        return last_error();
    }
    std::unique_lock threads(file, std::adopt_lock);
    const SystemError error = file.holds == 0 ? exclude_processes(file) : SystemError();
    if (!error) {
        ++file.holds;
        threads.release();
    }
    return error;
}

SystemError NamedMutex::unlock() {
    const bool fails = take_failure(Call::unlock_mutex);
    LockFile& file = *static_cast<LockFile*>(state_);
    if (ACE_OS::thread_mutex_trylock(&file.mutex) != 0) {
        return SystemError::posix(EPERM); // another thread has it
    }
    const std::unique_lock tried(file, std::adopt_lock);
    if (file.holds == 0) {
        return SystemError::posix(EPERM);
    }
    if (--file.holds == 0) {
        LockFiles::instance().close(file);
    }
    file.unlock(); // what lock() left locked
    return fails ? seams().failure : SystemError();
}

SystemError NamedMutex::close() {
    state_ = nullptr;
    return {};
}

} // namespace platform
