#include <filesystem>

#include "platform/file.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/failure.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

namespace fs = std::filesystem;
using support::TraceCapture;
using testing::HasSubstr;
using vdcertificates::ConfigurationFile;

class LifecycleTest : public StoreTest {
  protected:
    static void construct() { const ConfigurationFile file; }

    std::string public_key() const { return support::read_file(machine.public_key_file()); }
    std::string private_key() const { return support::read_file(machine.private_key_file()); }

    /// Constructs, and says whether the keys are others than before; they are read-only then.
    bool replaces_keys() {
        construct();
        std::string keys = public_key() + private_key();
        for (const std::string& file : {machine.public_key_file(), machine.private_key_file()}) {
            EXPECT_EQ(fs::status(file).permissions() & fs::perms::owner_write, fs::perms::none);
            EXPECT_EQ(support::read_file(file).substr(0, 2), "\x30\x82");
        }
        keys_.swap(keys);
        return keys_ != keys;
    }

    bool get_secret(ConfigurationFile& file) {
        std::string password;
        std::string other;
        return file.get_cluster_certificate_information(other, other, other, password) &&
               password == "secret";
    }

    const std::string files_ = "machinePublicKey: " + machine.public_key_file() +
                               ", machinePrivateKey: " + machine.private_key_file();
    const TraceCapture trace_{"VDCertificatesConfigurationFile=11"};

  private:
    std::string keys_;
};

TEST_F(LifecycleTest, AFreshMachineGetsOnePairThatObjectsAndTheirCopiesShare) {
    EXPECT_TRUE(replaces_keys());
    ConfigurationFile first;
    // The keys are in the root, wherever the variable moves the file.
    const support::EnvironmentGuard variable("ORVA_Certificates", machine.file("moved.xml"));
    ASSERT_TRUE(first.set_cluster_certificate_information("p", "k", "c", "secret"));
    EXPECT_TRUE(fs::exists(machine.file("moved.xml")));
    EXPECT_FALSE(fs::exists(machine.default_file()));
    EXPECT_FALSE(replaces_keys());
    ConfigurationFile second;
    EXPECT_TRUE(get_secret(second));
    const ConfigurationFile copy(first);
    support::remove_all(machine.root());
    ConfigurationFile assigned; // makes new keys
    EXPECT_FALSE(get_secret(assigned));
    assigned = copy;
    EXPECT_TRUE(get_secret(assigned));
    EXPECT_EQ(trace_.text(), "");
}

TEST_F(LifecycleTest, AMissingKeyFileIsReplacedSilentlyAndACorruptPairWithAnError) {
    replaces_keys();
    std::string other_public;
    for (const std::string& lost : {machine.public_key_file(), machine.private_key_file()}) {
        other_public = public_key();
        support::remove_all(lost);
        EXPECT_TRUE(replaces_keys());
    }
    EXPECT_EQ(trace_.text(), "");
    for (const std::string& broken : {other_public, std::string("junk")}) {
        support::remove_all(machine.public_key_file());
        support::write_file(machine.public_key_file(), broken);
        EXPECT_TRUE(replaces_keys());
        EXPECT_THAT(trace_.lines().back(),
                    testing::AllOf(HasSubstr(" vdcertificates::ConfigurationFile::"
                                             "ConfigurationFile() Caught exception when loading "
                                             "EXISTING keys for configuration file usage. " +
                                             files_ + ", caughtException: "),
                                   testing::EndsWith(". Regenerating NEW keys.")));
    }
    EXPECT_EQ(trace_.lines().size(), 2U);
}

TEST_F(LifecycleTest, AFileThatAnotherProcessHoldsReplacesNoKeys) {
    replaces_keys();
    // Held for longer than the attempts last.
    const auto holder = platform::open_file(machine.private_key_file(), platform::FileAccess::read,
                                            platform::FileDisposition::open_existing,
                                            platform::FileSharing::none, {});
    ASSERT_TRUE(holder);
    EXPECT_THROW(construct(), qncore::ErrorException);
    platform::close_file(*holder);
    EXPECT_FALSE(replaces_keys());
}

TEST_F(LifecycleTest, WhenRegenerationFailsTooTheErrorNamesBothFiles) {
    fs::create_directories(machine.root());
    support::write_file(machine.public_key_file(), "junk");
    fs::create_directory(machine.private_key_file()); // cannot be a key file
    EXPECT_EQ(support::failure_of(construct),
              "error.qncertificates.parameter.invalid "
              "vdcertificates::ConfigurationFile::ConfigurationFile() Caught exception when "
              "loading keys for configuration file usage. " +
                  files_ + ".");
    EXPECT_TRUE(support::error_of(construct)->nested());
    EXPECT_EQ(trace_.lines().size(), 4U);
    EXPECT_THAT(trace_.lines().back(), HasSubstr("Caught exception when creating keys for "
                                                 "configuration file usage. " +
                                                 files_ + ", caughtInnerException: "));
    EXPECT_EQ(public_key(), "junk");
    support::remove_all(machine.public_key_file());
    EXPECT_THROW(construct(), qncore::ErrorException);
    EXPECT_FALSE(fs::exists(machine.public_key_file()));
}

} // namespace
} // namespace store_test
