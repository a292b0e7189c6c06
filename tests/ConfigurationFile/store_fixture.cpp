#include "tests/ConfigurationFile/store_fixture.h"

#include <filesystem>

#include "platform/testing/testing.h"
#include "tests/qncertificates/quick_keys.h"

namespace store_test {

using vdcertificates::CertificateNode;
using vdcertificates::ConfigurationFileNodes;

Machine::Machine()
    : variable_("ORVA_Certificates", std::nullopt)
    , profile_("USERPROFILE", directory_.str())
    , home_("HOME", std::nullopt) {
    support::make_keys_quickly();
    enter(directory_.str());
}

Machine::~Machine() {
    platform::testing::store_machine_root(std::nullopt);
    platform::testing::remove_named_mutex(
        vdcertificates::ConfigurationFileMutex::sm_configurationFileMutexName);
}

void Machine::enter(const std::string& directory) {
    const std::filesystem::path path(directory);
    platform::testing::set_computer_name("TESTHOST");
    platform::testing::set_machine_setting(platform::testing::machine_setting_of(directory));
    platform::testing::set_mutex_name_suffix(path.filename().string());
}

std::string Machine::root() const {
    return (directory_.path() / "Orvane Systems" / "Certificates").string();
}

std::string Machine::in_root(const std::string& name) const {
    return (std::filesystem::path(root()) / name).make_preferred().string();
}

void StoreTest::write_configuration(const std::string& text) {
    std::filesystem::create_directories(machine.root());
    support::write_file(machine.default_file(), text);
}

CertificateNode entry(std::string name, std::string publicKey, std::string privateKey,
                      std::string certificate, std::string password, std::string trusted) {
    return {std::move(name),        std::move(publicKey), std::move(privateKey),
            std::move(certificate), std::move(password),  std::move(trusted)};
}

std::string show(const CertificateNode& node) {
    return node.name + "(" + node.publicKeyPath + "," + node.privateKeyPath + "," +
           node.certificatePath + "," + node.password + "," + node.trustedCertificatePath + ")";
}

std::string show(const ConfigurationFileNodes& nodes) {
    std::string text;
    for (const CertificateNode& node : nodes.certificates) {
        text += show(node);
    }
    for (const auto& [key, entries] : nodes.notifiers) {
        text += "[" + key + ":";
        for (const CertificateNode& node : entries) {
            text += show(node);
        }
        text += "]";
    }
    return text;
}

std::string document(const std::string& notifiers, const std::string& devices,
                     const std::string& mediaRetrieval) {
    return "<ORVACertificates><Notifiers>" + notifiers + "</Notifiers><SIPDevices>" + devices +
           "</SIPDevices><MediaRetrieval>" + mediaRetrieval +
           "</MediaRetrieval></ORVACertificates>";
}

std::string entry_text(const std::string& name) {
    return "<" + name +
           "><PublicKeyPath></PublicKeyPath><PrivateKeyPath></PrivateKeyPath><CertificatePath>"
           "</CertificatePath><Password></Password><TrustedCertificatePath>"
           "</TrustedCertificatePath></" +
           name + ">";
}

} // namespace store_test
