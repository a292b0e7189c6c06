#pragma once

#include <optional>
#include <string>
#include <vector>

#include "ConfigurationFile/configuration_file.h"
#include "qncertificates/certificate_keys.h"
#include "tools/vdcertificates/document.h"
#include "tools/vdcertificates/exit_status.h"

namespace tool {

/// Where the machine's key pair is. The directory may be empty: then it is the file root.
struct KeyFiles {
    std::string directory;
    std::string public_key;
    std::string private_key;
};
KeyFiles key_files();

/// Whether anything has that name; an error where that cannot be found out.
platform::Result<bool> existence(const std::string& path);

/// What to throw then.
Failure refused_look(const std::string& path, platform::SystemError error,
                     const char* code = "file_unreadable");

/// The directory that the machine's setting names, without a separator at its end; empty when there
/// is none. Throws Failure when that cannot be found out.
std::string machine_setting();

/// What ORVA_Certificates holds; empty when it is not set.
std::string named_file();

/// Where the former content of a file is kept: beside the file that a link leads to.
std::string previous_of(const std::string& path);

/// The library at work. Holds the machine-wide lock from before the first look at any file until
/// unlock() or its end, so that what was read is what is changed. Never replaces keys: a pair that
/// cannot be used, or half a pair, is a Failure, and the files stay as they are.
class Store {
  public:
    /// Makes the keys when both files are missing. `replaceKeys` lets an unusable pair be replaced
    /// all the same.
    explicit Store(bool replaceKeys = false);

    const std::string& path() const noexcept { return path_; }
    const KeyFiles& keys() const noexcept { return keys_; }

    /// What was made, and where a wish of the administrator could not be followed.
    const std::vector<std::string>& made() const noexcept { return made_; }
    const std::vector<std::string>& warnings() const noexcept { return warnings_; }
    /// Throws Failure if ORVA_Certificates names a file that this account may not write.
    void refuse_change_elsewhere() const;

    /// Print them on standard error.
    void print_made() const;
    void print_warnings() const;

    vdcertificates::ConfigurationFile& file() noexcept { return *file_; }
    vdcertificates::PasswordCipher& cipher() noexcept { return *cipher_; }
    Reading read(const EntryVisitor& visit) { return read_document(path_, &*cipher_, visit); }

    /// Gives up the lock: before output, for which the machine must not wait.
    void unlock() { lock_.reset(); }
    void lock() { lock_.emplace(mutex_); }

  private:
    void open_keys(bool replaceKeys);
    bool load_keys();
    void find_file();

    qncore::RefCountPtr<vdcertificates::ConfigurationFileMutex> mutex_;
    std::optional<vdcertificates::ConfigurationFileExclusiveAccessLock> lock_;
    KeyFiles keys_;
    qncore::RefCountPtr<qncertificates::CertificateKeys> pair_;
    std::optional<vdcertificates::PasswordCipher> cipher_;
    std::optional<vdcertificates::ConfigurationFile> file_;
    std::string path_;
    std::vector<std::string> made_;
    std::vector<std::string> warnings_;
    bool elsewhere_ = false;
};

} // namespace tool
