#pragma once

#include <string>

#include "ConfigurationFile/export.h"
#include "platform/named_mutex.h"
#include "qncore/ref_counted.h"

namespace vdcertificates {

/// The machine-wide mutex that all programs hold during each access to the file. Recursive: the
/// thread that holds it may acquire it again, also through another object, and call the operations
/// of ConfigurationFile, so a program can read and change under one lock. Exceptions derive from
/// std::exception and contain the system's error number in their text.
class VDCERTIFICATES_API ConfigurationFileMutex
    : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    /// The same in every build, since all programs of a machine share it.
    static const std::string sm_configurationFileMutexName;

    /// Returns a new object for the mutex. Throws if it can be neither created nor opened.
    static qncore::RefCountPtr<ConfigurationFileMutex> create();

    /// Waits without a time limit; returns at once in a thread that holds the mutex, through any
    /// object.
    void acquire_lock();
    /// Call once for each acquire_lock(), on the same thread. Throws if this thread does not hold
    /// the mutex.
    void release_lock();

  private:
    ConfigurationFileMutex();
    ~ConfigurationFileMutex() override;

    platform::NamedMutex m_mutex;
};

/// Holds the mutex for a scope. A copy does not acquire but releases (required): of an object and
/// its copy, the second destructor throws. Destructors do not throw during stack unwinding.
class VDCERTIFICATES_API ConfigurationFileExclusiveAccessLock {
  public:
    /// Acquires the mutex.
    explicit ConfigurationFileExclusiveAccessLock(
        const qncore::RefCountPtr<ConfigurationFileMutex>& mutex);
    /// @{
    /// Does not acquire.
    ConfigurationFileExclusiveAccessLock(const ConfigurationFileExclusiveAccessLock& other);
    ConfigurationFileExclusiveAccessLock&
    operator=(const ConfigurationFileExclusiveAccessLock& other);
    /// @}
    ~ConfigurationFileExclusiveAccessLock() noexcept(false);

  private:
    qncore::RefCountPtr<ConfigurationFileMutex> m_mutexHolder;
};

} // namespace vdcertificates
