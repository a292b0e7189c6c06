#include "tools/vdcertificates/store.h"

#include "ConfigurationFile/configuration_file_access.h"
#include "platform/environment.h"
#include "platform/file_backup.h"
#include "platform/file_operations.h"
#include "platform/file_system.h"
#include "platform/machine.h"
#include "platform/path.h"
#include "platform/permissions.h"
#include "qncore/error_exception.h"
#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/output.h"

namespace tool {

using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileAccess;
using vdcertificates::ConfigurationFileMutex;

namespace {

const std::string& variable = ConfigurationFile::sm_configurationFilePathEnvironmentVariable;

/// True if the key file exists and is not empty: a first use that was killed leaves empty files.
/// Throws if that cannot be found out.
bool is_there(const std::string& path) {
    const auto found = existence(path);
    if (!found) {
        throw refused_look(path, found.error(), "key_file_unreadable");
    }
    const auto size = platform::file_size_by_name(path);
    return *found && !(size && *size == 0);
}

[[noreturn]] void refuse_half_a_pair(const std::string& there, const std::string& missing) {
    throw Failure("the key file " + missing + " is missing or empty while " + there +
                      " is there; a new pair would take the place of both, and all stored "
                      "passwords would be lost: bring it back from a backup, or remove the other "
                      "one to have a new pair made",
                  "key_file_missing", missing);
}

[[noreturn]] void refuse_pair(const KeyFiles& keys, const std::string& cause) {
    for (const std::string& path : {keys.public_key, keys.private_key}) {
        if (const platform::SystemError error = platform::check_read_access(path)) {
            throw Failure("the key file " + path + " cannot be read (" + platform::describe(error) +
                              "): use an account that may read it",
                          "key_file_unreadable", path);
        }
    }
    throw Failure("the key pair " + keys.public_key + ", " + keys.private_key +
                      " cannot be used (" + cause +
                      "): bring both files back from a backup; or remove both to have a new pair "
                      "made, and set all passwords again",
                  "key_pair_unusable", keys.public_key);
}

} // namespace

KeyFiles key_files() {
    const std::string directory =
        vdcertificates::create_and_get_default_root_configuration_directory();
    const std::string prefix =
        directory + platform::preferred_separator + vdcertificates::get_local_machine_name() + "_";
    return {directory, prefix + ConfigurationFile::sm_machinePublicKeyFilePath,
            prefix + ConfigurationFile::sm_machinePrivateKeyFilePath};
}

platform::Result<bool> existence(const std::string& path) {
    const platform::SystemError error = platform::check_existence(path);
    if (error && !error.is_not_found()) {
        return error;
    }
    return !error;
}

Failure refused_look(const std::string& path, platform::SystemError error, const char* code) {
    return Failure("cannot look at " + path + ": " + platform::describe(error), code, path);
}

std::string machine_setting() {
    const auto found = platform::machine_root_directory();
    if (!found) {
        throw refused_look(platform::machine_setting_source(), found.error());
    }
    std::string setting = found->value_or("");
    if (setting.ends_with(platform::preferred_separator)) {
        setting.pop_back();
    }
    return setting;
}

std::string named_file() {
    return platform::environment_variable(variable.c_str()).value_or("");
}

std::string previous_of(const std::string& path) {
    const auto real = platform::real_path(path);
    return (real ? *real : path) + ".previous";
}

std::string cause_of(const std::exception& exception) {
    const auto* error = dynamic_cast<const qncore::ErrorException*>(&exception);
    return error != nullptr ? error->info()->chain_text() : exception.what();
}

Store::Store(bool replaceKeys)
    : mutex_(ConfigurationFileMutex::create())
    , lock_(std::in_place, mutex_)
    , keys_(key_files()) {
    open_keys(replaceKeys);
    find_file();
}

bool Store::load_keys() {
    pair_ =
        qncore::RefCountPtr<qncertificates::CertificateKeys>(new qncertificates::CertificateKeys(
            keys_.public_key, keys_.private_key, qncertificates::eFormatPkcs1Der, false));
    return true;
}

void Store::open_keys(bool replaceKeys) {
    const bool public_there = is_there(keys_.public_key);
    const bool private_there = is_there(keys_.private_key);
    if (public_there != private_there && !replaceKeys) {
        public_there ? refuse_half_a_pair(keys_.public_key, keys_.private_key)
                     : refuse_half_a_pair(keys_.private_key, keys_.public_key);
    }
    bool loaded = false;
    try {
        loaded = public_there && private_there && load_keys();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& exception) {
        if (!replaceKeys) {
            refuse_pair(keys_, cause_of(exception));
        }
    }
    file_.emplace(); // makes the pair that is missing, or replaces it
    if (!loaded) {
        load_keys();
        made_.push_back("made a new pair of keys: " + keys_.public_key + ", " + keys_.private_key);
    }
    cipher_.emplace(*pair_, vdcertificates::PasswordCipher::Memory::texts);
}

void Store::find_file() {
    const std::string named = named_file();
    const bool missing = !named.empty() && platform::check_existence(named).is_not_found();
    path_ = ConfigurationFileAccess::path(*file_);
    elsewhere_ = !named.empty() && path_ != named;
    if (elsewhere_) {
        warnings_.push_back("the file " + named + ", which " + variable +
                            " names, cannot be written by this account (" +
                            platform::describe(platform::probe_write_access(named)) + "); " +
                            path_ + " is used instead");
    } else if (missing && !platform::check_existence(named)) {
        made_.push_back("made the empty file " + named);
    }
    const std::string setting = machine_setting();
    if (!setting.empty() && setting != keys_.directory) {
        warnings_.push_back("the directory " + setting + ", which the machine's setting in " +
                            platform::machine_setting_source() +
                            " names, cannot be written by this account; the user's profile is "
                            "used instead");
    }
}

void Store::refuse_change_elsewhere() const {
    if (elsewhere_) {
        throw Failure(warnings_.front() + " by programs that only read; nothing is changed");
    }
}

void Store::print_made() const {
    for (const std::string& text : made_) {
        print_error("note: " + text);
    }
}

void Store::print_warnings() const {
    for (const std::string& text : warnings_) {
        print_error("warning: " + text);
    }
}

} // namespace tool
