#include "ConfigurationFile/location.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "ConfigurationFile/configuration_file.h"
#include "ConfigurationFile/errors.h"
#include "ConfigurationFile/trace_topic.h"
#include "VDCertificatesFileUtilities/file_utilities.h"
#include "platform/environment.h"
#include "platform/file_system.h"
#include "platform/machine.h"
#include "platform/path.h"
#include "qncertificates/errors.h"
#include "qncore/error_composer.h"
#include "qncore/error_exception.h"
#include "qncore/system_name.h"

namespace vdcertificates {
namespace {

constexpr int probe_attempts = 3;
constexpr std::chrono::milliseconds probe_pause(20);

constexpr const char* probe_name = "vdcertificates::file_has_write_access()";
constexpr const char* path_name =
    "vdcertificates::ConfigurationFile::get_configuration_file_path()";
constexpr const char* root_name =
    "vdcertificates::create_and_get_default_root_configuration_directory()";

bool probe(const std::string& path, bool* sharingViolation) {
    qncore::check_system_name(path);
    for (int attempt = 0; attempt < probe_attempts; ++attempt) {
        const platform::SystemError error = platform::probe_write_access(path);
        if (!error.is_sharing_violation()) {
            return !error;
        }
        std::this_thread::sleep_for(probe_pause); // required: also after the last attempt
    }
    QN_TRACE_ERROR(
        g_traceTopic, probe_name,
        "Error Message: The file: {} has been opened with EXCLUSIVE access by an EXTERNAL process!",
        path);
    *sharingViolation = true;
    return false;
}

[[noreturn]] void throw_directory_error(const std::string& directory, const char* function) {
    const std::string message = "Failed to create the directory: " + directory + ".";
    QN_TRACE_ERROR(g_traceTopic, function, "Error Message: {}", message);
    qncore::throw_error(qncertificates::error::qncertificates_filesystem_mkdir,
                        qncore::SourceString::copy_of(message), QN_LOCATION(function));
}

/// The machine's root directory if this account may write there, else empty.
std::string machine_root() {
    const auto setting = platform::machine_root_directory();
    if (!setting) {
        qncore::ErrorComposer("Failed to read the machine's setting in {@source}")
            .param("source", platform::machine_setting_source())
            .throw_with_nested_system_error(qncertificates::error::qncertificates_parameter_invalid,
                                            QN_LOCATION(root_name), setting.error());
    }
    if (!*setting) {
        return {};
    }
    std::string root = **setting;
    if (root.ends_with(platform::preferred_separator)) {
        root.pop_back();
    }
    const std::string file =
        root + platform::preferred_separator + get_local_machine_name() + "_ORVA_Certificates.xml";
    const auto mutex = ConfigurationFileMutex::create();
    const ConfigurationFileExclusiveAccessLock lock(mutex);
    bool ignored = false;
    if (file_has_write_access(file, &ignored)) {
        return root;
    }
    QN_TRACE_WARNING(g_traceTopic, root_name,
                     "Current user has NO access to: {}, as specified under the "
                     "HKEY_LOCAL_MACHINE\\{} key.",
                     root, platform::machine_setting_source());
    return {};
}

/// The directory below the user's profile; empty without a profile.
std::string profile_root() {
    const std::optional<std::string> profile = platform::user_profile_directory();
    if (!profile) {
        return {};
    }
    std::string root = *profile;
    if (!root.ends_with(platform::preferred_separator)) {
        root += platform::preferred_separator;
    }
    return root + "Orvane Systems" + platform::preferred_separator + "Certificates";
}

/// Creates each directory of the path in turn. Throws only if the last one does not exist then.
void create_directories(const std::string& path) {
    bool failed = false;
    for (std::size_t end = 0; end < path.size(); ++end) {
        end = std::min(path.find(platform::preferred_separator, end), path.size());
        if (!FileUtilities::create_directory(path.substr(0, end))) {
            failed = true;
        }
    }
    if (failed && platform::check_existence(path).is_not_found()) {
        throw_directory_error(path, root_name);
    }
}

} // namespace

bool file_has_write_access(const std::string& path, bool* sharingViolation) {
    *sharingViolation = false;
    try {
        return probe(path, sharingViolation);
    } catch (...) {
        // Required: a name that cannot be probed counts as writable unless access is refused.
        return !platform::check_read_write_access(path).is_access_denied();
    }
}

std::string create_and_get_default_root_configuration_directory() {
    std::string root = machine_root();
    if (root.empty()) {
        root = profile_root();
    }
    create_directories(root);
    return root;
}

std::string ConfigurationFile::get_configuration_file_path() {
    const std::string& variable = sm_configurationFilePathEnvironmentVariable;
    std::string path = platform::environment_variable(variable.c_str()).value_or("");
    const std::string directory = path.substr(0, path.rfind(platform::preferred_separator));
    if (!directory.empty()) {
        if (!FileUtilities::create_directory(directory)) {
            throw_directory_error(directory, path_name);
        }
        const ConfigurationFileExclusiveAccessLock lock(m_configurationFileMutex);
        bool sharingViolation = false;
        if (!file_has_write_access(path, &sharingViolation)) {
            if (sharingViolation) {
                qncore::throw_error(
                    error::sharing_violation,
                    qncore::SourceString::copy_of(
                        "File: " + path + " has already been opened with EXCLUSIVE access!"),
                    QN_LOCATION(path_name));
            }
            QN_TRACE_WARNING(g_traceTopic, path_name,
                             "Current user has NO access to: {}, as specified by the environment "
                             "variable: {}.",
                             path, variable);
            path.clear();
        }
    }
    if (path.empty()) {
        path = create_and_get_default_root_configuration_directory() +
               platform::preferred_separator + get_local_machine_name() + "_" +
               sm_configurationFileName;
    }
    QN_TRACE_NOTE(g_traceTopic, path_name, "configurationFilePath: {}", path);
    return path;
}

} // namespace vdcertificates
