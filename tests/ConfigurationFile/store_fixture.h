#pragma once

#include <optional>
#include <string>

#include <gmock/gmock.h>

#include "ConfigurationFile/configuration_file_access.h"
#include "tests/support/environment_guard.h"
#include "tests/support/temporary_directory.h"

namespace store_test {

/// A machine of the test's own: name, profile, setting, mutex, and no variable that moves the
/// file. Its parts can be handed to child processes by `directory()`.
class Machine {
  public:
    Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    ~Machine();

    std::string directory() const { return directory_.str(); }
    /// Where the keys lie, and the file unless the variable moves it.
    std::string root() const;
    std::string default_file() const { return in_root("TESTHOST_ORVA_Certificates.xml"); }
    std::string public_key_file() const { return in_root("TESTHOST_PublicKey.bin"); }
    std::string private_key_file() const { return in_root("TESTHOST_PrivateKey.bin"); }
    std::string in_root(const std::string& name) const;
    /// A path in the test's directory.
    std::string file(const std::string& name) const { return directory_.file(name); }

    /// Makes this process live on the machine that lies in the directory.
    static void enter(const std::string& directory);

  private:
    support::TemporaryDirectory directory_;
    support::EnvironmentGuard variable_;
    support::EnvironmentGuard profile_;
    support::EnvironmentGuard home_;
};

class StoreTest : public testing::Test {
  protected:
    void write_configuration(const std::string& text);
    std::string configuration() const { return support::read_file(machine.default_file()); }

    Machine machine;
};

/// An entry with its fields in the order of the file.
vdcertificates::CertificateNode entry(std::string name, std::string publicKey = "",
                                      std::string privateKey = "", std::string certificate = "",
                                      std::string password = "", std::string trusted = "");

/// Entries and whole sections compare and print by their fields.
std::string show(const vdcertificates::CertificateNode& node);
std::string show(const vdcertificates::ConfigurationFileNodes& nodes);

/// The text of a file with these sections' contents.
std::string document(const std::string& notifiers, const std::string& devices = "",
                     const std::string& mediaRetrieval = "");

/// The text of an entry without values as the file has it.
std::string entry_text(const std::string& name);

} // namespace store_test
