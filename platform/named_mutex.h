#pragma once

#include <string>

namespace platform {

class SystemError;

/// A recursive mutex that all processes of the machine share by its name, which is "Global\"
/// followed by the mutex's own name. The holding thread may lock it again, through any object of
/// that name. The death of a process releases it; a child made by fork() does not hold it.
class NamedMutex {
  public:
    NamedMutex() noexcept = default;
    NamedMutex(const NamedMutex&) = delete;
    NamedMutex& operator=(const NamedMutex&) = delete;
    ~NamedMutex() = default;

    /// Creates the mutex, or opens it with full rights if it exists. is_access_denied() if this
    /// account lacks those rights. Call it once, before any other function.
    SystemError create(const std::string& name);

    /// Opens the existing mutex with only the right to wait and to release, after create() was
    /// denied. On Linux there are no other rights.
    SystemError open_limited(const std::string& name);

    /// Waits without a time limit. Every lock() needs an unlock().
    SystemError lock();

    /// Fails if the calling thread does not hold the mutex.
    SystemError unlock();

    /// Closes this object. A thread that holds the mutex keeps it.
    SystemError close();

  private:
    void* state_ = nullptr; ///< owned by the implementation
};

} // namespace platform
