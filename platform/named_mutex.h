#pragma once

#include <string>

#include "platform/system_error.h"

namespace platform {

/// A recursive mutex that all processes of the machine share by its name, over ACE's
/// process-shared mutex. A holder that dies leaves it to the next one. The name is
/// "Global\" and the mutex's own name.
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

    /// Waits with no time limit.
    SystemError lock();

    /// Fails when the calling thread does not hold the mutex.
    SystemError unlock();

    /// Lets go of the mutex; it lives on while any process has it.
    SystemError close();

  private:
    void* state_ = nullptr; ///< what the system's side keeps for an open mutex
};

} // namespace platform
