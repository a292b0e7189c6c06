#pragma once

#include <string>

namespace platform {

class SystemError;

/// A recursive mutex that all processes of the machine share by its name, which is "Global\"
/// followed by the mutex's own name. It belongs to a thread, which may take it again through any
/// object of that name, and is released when its process dies. A child made by fork() holds
/// nothing.
class NamedMutex {
  public:
    NamedMutex() noexcept = default;
    NamedMutex(const NamedMutex&) = delete;
    NamedMutex& operator=(const NamedMutex&) = delete;
    ~NamedMutex() = default;

    /// Creates the mutex, or opens it with full rights when it exists. is_access_denied() when it
    /// exists and this account has not those rights. To be called once.
    SystemError create(const std::string& name);

    /// Opens the existing mutex with no right but to wait and to release, after create() was
    /// denied.
    SystemError open_limited(const std::string& name);

    /// Waits with no time limit. Every lock() needs an unlock() of its own.
    SystemError lock();

    /// Fails if the calling thread does not hold the mutex.
    SystemError unlock();

    /// Closes this object. A thread that holds the mutex keeps it.
    SystemError close();

  private:
    void* state_ = nullptr; ///< what the system's side keeps for an open mutex
};

} // namespace platform
