#include "ConfigurationFile/configuration_file_mutex.h"

#include <exception>

#include "ConfigurationFile/trace_topic.h"
#include "platform/system_error.h"
#include "qncertificates/errors.h"
#include "qncore/error_composer.h"

namespace vdcertificates {
namespace {

[[noreturn]] void throw_mutex_error(const char* message, platform::SystemError error,
                                    const qncore::SourceLocation& location) {
    const int number = static_cast<int>(error.number());
    qncore::ErrorComposer(message)
        .param("errorCode", number)
        .throw_with_nested_errno(qncertificates::error::qncertificates_parameter_invalid, location,
                                 number);
}

} // namespace

const std::string ConfigurationFileMutex::sm_configurationFileMutexName =
    "Global\\{2780CEA8-95DE-41D1-955F-C2A000BD437A}";

ConfigurationFileMutex::ConfigurationFileMutex() {
    const auto location =
        QN_LOCATION("vdcertificates::ConfigurationFileMutex::ConfigurationFileMutex()");
    platform::SystemError error = m_mutex.create(sm_configurationFileMutexName);
    if (!error) {
        return;
    }
    if (!error.is_access_denied()) {
        throw_mutex_error("Failed to initialized configuration file mutex. ErrorCode: "
                          "{@errorCode}",
                          error, location);
    }
    error = m_mutex.open_limited(sm_configurationFileMutexName);
    if (error) {
        throw_mutex_error("Failed to open existing configuration file mutex with limited "
                          "permissions. ErrorCode: {@errorCode}",
                          error, location);
    }
}

ConfigurationFileMutex::~ConfigurationFileMutex() {
    if (const platform::SystemError error = m_mutex.close()) {
        QN_TRACE_ERROR(g_traceTopic,
                       "vdcertificates::ConfigurationFileMutex::~ConfigurationFileMutex()",
                       "Error Message: Failed to destroy configuration file mutex. ErrorCode: {}",
                       error.number());
    }
}

qncore::RefCountPtr<ConfigurationFileMutex> ConfigurationFileMutex::create() {
    return qncore::RefCountPtr<ConfigurationFileMutex>(new ConfigurationFileMutex());
}

void ConfigurationFileMutex::acquire_lock() {
    if (const platform::SystemError error = m_mutex.lock()) {
        throw_mutex_error("Failed to lock configuration file mutex. ErrorCode: {@errorCode}", error,
                          QN_LOCATION("vdcertificates::ConfigurationFileMutex::acquire_lock()"));
    }
}

void ConfigurationFileMutex::release_lock() {
    if (const platform::SystemError error = m_mutex.unlock()) {
        throw_mutex_error("Failed to unlock configuration file mutex. ErrorCode: {@errorCode}",
                          error,
                          QN_LOCATION("vdcertificates::ConfigurationFileMutex::release_lock()"));
    }
}

ConfigurationFileExclusiveAccessLock::ConfigurationFileExclusiveAccessLock(
    const qncore::RefCountPtr<ConfigurationFileMutex>& mutex)
    : m_mutexHolder(mutex) {
    m_mutexHolder->acquire_lock();
}

// Required: copies share the mutex and neither acquire nor release.
ConfigurationFileExclusiveAccessLock::ConfigurationFileExclusiveAccessLock(
    const ConfigurationFileExclusiveAccessLock& other) = default;
ConfigurationFileExclusiveAccessLock& ConfigurationFileExclusiveAccessLock::operator=(
    const ConfigurationFileExclusiveAccessLock& other) = default;

ConfigurationFileExclusiveAccessLock::~ConfigurationFileExclusiveAccessLock() noexcept(false) {
    try {
        m_mutexHolder->release_lock();
    } catch (const std::exception&) {
        if (std::uncaught_exceptions() == 0) { // else the first exception continues
            throw;
        }
    }
}

} // namespace vdcertificates
