#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include <gmock/gmock.h>

#include "ConfigurationFile/configuration_file_access.h"
#include "ConfigurationFile/password_cipher.h"
#include "platform/testing/testing.h"
#include "qncertificates/certificate_keys.h"
#include "tests/qncertificates/quick_keys.h"
#include "tests/support/environment_guard.h"
#include "tests/support/temporary_directory.h"

namespace store_test {

/// A machine of the test's own: name, profile, setting, mutex, and no variable that moves the file.
/// A child process enters it by its directory.
class Machine {
  public:
    Machine() {
        support::make_keys_quickly();
        enter(directory_.str());
    }
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;
    ~Machine() {
        platform::testing::store_machine_root(std::nullopt);
        platform::testing::remove_named_mutex(
            vdcertificates::ConfigurationFileMutex::sm_configurationFileMutexName);
    }

    /// Makes this process use the machine of that directory.
    static void enter(const std::string& directory) {
        platform::testing::set_computer_name("TESTHOST");
        platform::testing::set_machine_setting(platform::testing::machine_setting_of(directory));
        platform::testing::set_mutex_name_suffix(
            std::filesystem::path(directory).filename().string());
    }

    std::string directory() const { return directory_.str(); }
    /// A path in the test's directory.
    std::string file(const std::string& name) const { return directory_.file(name); }
    /// The directory of the keys, and of the file unless the variable moves it.
    std::string root() const { return file("Orvane Systems/Certificates"); }
    std::string default_file() const { return root_ + "ORVA_Certificates.xml"; }
    std::string public_key_file() const { return root_ + "PublicKey.bin"; }
    std::string private_key_file() const { return root_ + "PrivateKey.bin"; }

  private:
    support::TemporaryDirectory directory_;
    std::string root_ = file("Orvane Systems/Certificates/TESTHOST_");
    support::EnvironmentGuard variable_{"ORVA_Certificates", std::nullopt};
    support::EnvironmentGuard profile_{"USERPROFILE", directory_.str()};
    support::EnvironmentGuard home_{"HOME", std::nullopt};
};

class StoreTest : public testing::Test {
  protected:
    void write_configuration(const std::string& text) {
        std::filesystem::create_directories(machine.root());
        support::write_file(machine.default_file(), text);
    }
    std::string configuration() const { return support::read_file(machine.default_file()); }
    /// Replaces the whole content of the file, in pieces of that size unless it is 0, and enciphers
    /// each password anew.
    void replace(vdcertificates::ConfigurationFile& file,
                 const vdcertificates::ConfigurationFileAccess::Document& nodes,
                 std::size_t piece = 0) const {
        const qncertificates::CertificateKeys keys(machine.public_key_file(),
                                                   machine.private_key_file(),
                                                   qncertificates::eFormatPkcs1Der, false);
        vdcertificates::PasswordCipher cipher(keys, vdcertificates::PasswordCipher::Memory::none);
        using Access = vdcertificates::ConfigurationFileAccess;
        piece == 0 ? Access::write(file, nodes, cipher)
                   : Access::write_in_pieces(file, nodes, cipher, piece);
    }

    Machine machine;
};

/// True if the cluster's entry is there and its password is "secret".
inline bool has_secret(vdcertificates::ConfigurationFile& file) {
    std::string password;
    std::string other;
    return file.get_cluster_certificate_information(other, other, other, password) &&
           password == "secret";
}

/// An entry with its fields in the order of the file.
inline vdcertificates::CertificateNode entry(std::string name, std::string publicKey = "",
                                             std::string privateKey = "",
                                             std::string certificate = "",
                                             std::string password = "", std::string trusted = "") {
    return {std::move(name),        std::move(publicKey), std::move(privateKey),
            std::move(certificate), std::move(password),  std::move(trusted)};
}

/// Entries and whole sections compare and print by their fields.
inline std::string show(const vdcertificates::CertificateNode& node) {
    return node.name + "(" + node.publicKeyPath + "," + node.privateKeyPath + "," +
           node.certificatePath + "," + node.password + "," + node.trustedCertificatePath + ")";
}

inline std::string show(const vdcertificates::ConfigurationFileNodes& nodes) {
    std::string text;
    for (const auto& node : nodes.certificates) {
        text += show(node);
    }
    for (const auto& [key, entries] : nodes.notifiers) {
        text += "[" + key + ":";
        for (const auto& node : entries) {
            text += show(node);
        }
        text += "]";
    }
    return text;
}

/// The text of a file with these sections.
inline std::string document(const std::string& notifiers, const std::string& devices = "",
                            const std::string& mediaRetrieval = "") {
    return "<ORVACertificates><Notifiers>" + notifiers + "</Notifiers><SIPDevices>" + devices +
           "</SIPDevices><MediaRetrieval>" + mediaRetrieval +
           "</MediaRetrieval></ORVACertificates>";
}

/// The text of an entry without values.
inline std::string entry_text(const std::string& name) {
    return "<" + name +
           "><PublicKeyPath></PublicKeyPath><PrivateKeyPath></PrivateKeyPath><CertificatePath>"
           "</CertificatePath><Password></Password><TrustedCertificatePath>"
           "</TrustedCertificatePath></" +
           name + ">";
}

} // namespace store_test
