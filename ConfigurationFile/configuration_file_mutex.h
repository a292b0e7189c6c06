#pragma once

#include <string>

#include "ConfigurationFile/export.h"
#include "platform/named_mutex.h"
#include "qncore/ref_counted.h"

namespace vdcertificates {

/// The machine-wide mutex that all programs take around each access to the file. Failures are
/// ErrorExceptions with the code of qncertificates_parameter_invalid and the system's number.
class VDCERTIFICATES_API ConfigurationFileMutex
    : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    /// The same in every build: it is what the programs of a machine have in common.
    static const std::string sm_configurationFileMutexName;

    /// A new object on the one mutex; throws when it can be neither created nor opened.
    static qncore::RefCountPtr<ConfigurationFileMutex> create();

    /// Waits with no time limit; returns at once in a thread that holds the mutex, through whatever
    /// object. Released by the same thread, once for each time.
    void acquire_lock();
    void release_lock();

  private:
    ConfigurationFileMutex();
    ~ConfigurationFileMutex() override;

    platform::NamedMutex m_mutex;
};

/// Holds the mutex for a scope. A copy does not acquire, yet releases: an object and its copy
/// release twice, and the second release throws out of the destructor.
class VDCERTIFICATES_API ConfigurationFileExclusiveAccessLock {
  public:
    explicit ConfigurationFileExclusiveAccessLock(
        const qncore::RefCountPtr<ConfigurationFileMutex>& mutex);
    ConfigurationFileExclusiveAccessLock(const ConfigurationFileExclusiveAccessLock& other);
    ConfigurationFileExclusiveAccessLock&
    operator=(const ConfigurationFileExclusiveAccessLock& other);
    ~ConfigurationFileExclusiveAccessLock() noexcept(false);

  private:
    qncore::RefCountPtr<ConfigurationFileMutex> m_mutexHolder;
};

} // namespace vdcertificates
