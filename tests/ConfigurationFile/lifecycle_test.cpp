#include <cerrno>
#include <filesystem>

#include "platform/file.h"
#include "platform/testing/testing.h"
#include "qncertificates/errors.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/failure.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

namespace fs = std::filesystem;
using vdcertificates::ConfigurationFile;

class LifecycleTest : public StoreTest {
  protected:
    static void construct() { const ConfigurationFile file; }

    std::string public_key() const { return support::read_file(machine.public_key_file()); }
    std::string private_key() const { return support::read_file(machine.private_key_file()); }

    void expect_keys_at_rest() const {
        for (const std::string& file : {machine.public_key_file(), machine.private_key_file()}) {
            EXPECT_EQ(fs::status(file).permissions() & fs::perms::owner_write, fs::perms::none)
                << file;
        }
        EXPECT_EQ(public_key().substr(0, 2), "\x30\x82");
        EXPECT_EQ(private_key().substr(0, 2), "\x30\x82");
    }
};

TEST_F(LifecycleTest, AFreshMachineGetsOnePairThatTheNextObjectLoads) {
    const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
    ConfigurationFile first;
    expect_keys_at_rest();
    const std::string publicKey = public_key();
    const std::string privateKey = private_key();
    ASSERT_TRUE(first.set_cluster_certificate_information("p", "k", "c", "secret"));

    ConfigurationFile second;
    EXPECT_EQ(public_key(), publicKey);
    EXPECT_EQ(private_key(), privateKey);
    std::string password;
    std::string other;
    EXPECT_TRUE(second.get_cluster_certificate_information(other, other, other, password));
    EXPECT_EQ(password, "secret");
    EXPECT_EQ(capture.text(), "");
}

TEST_F(LifecycleTest, CopiesShareTheKeys) {
    ConfigurationFile file;
    ConfigurationFile copy(file);
    support::remove_all(machine.root());
    ConfigurationFile assigned; // makes new keys
    assigned = copy;
    ASSERT_TRUE(file.set_cluster_certificate_information("p", "k", "c", "secret"));
    std::string password;
    std::string other;
    EXPECT_TRUE(assigned.get_cluster_certificate_information(other, other, other, password));
    EXPECT_EQ(password, "secret");
}

TEST_F(LifecycleTest, ACorruptPairIsRegenerated) {
    construct();
    const std::string other_public = public_key();
    support::remove_all(machine.root());
    construct();
    for (const std::string& broken : {std::string("junk"), other_public}) {
        const std::string before = private_key();
        fs::permissions(machine.public_key_file(), fs::perms::owner_write, fs::perm_options::add);
        support::write_file(machine.public_key_file(), broken);
        const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
        construct();
        expect_keys_at_rest();
        EXPECT_NE(private_key(), before);
        EXPECT_THAT(
            capture.lines(),
            testing::ElementsAre(testing::AllOf(
                testing::HasSubstr(" vdcertificates::ConfigurationFile::ConfigurationFile() Caught "
                                   "exception when loading EXISTING keys for configuration file "
                                   "usage. machinePublicKey: " +
                                   machine.public_key_file() + ", machinePrivateKey: " +
                                   machine.private_key_file() + ", caughtException: "),
                testing::EndsWith(". Regenerating NEW keys."))));
    }
}

TEST_F(LifecycleTest, ALoneKeyFileIsReplacedWithoutAWord) {
    construct();
    for (const std::string& lost : {machine.public_key_file(), machine.private_key_file()}) {
        const std::string before = private_key();
        support::remove_all(lost);
        const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
        construct();
        expect_keys_at_rest();
        EXPECT_NE(private_key(), before);
        EXPECT_EQ(capture.text(), "");
    }
}

TEST_F(LifecycleTest, AFailureThatPassesReplacesNoKeys) {
    construct();
    const std::string before = public_key() + private_key();
    for (const platform::Call call : {platform::Call::open, platform::Call::read}) {
        platform::testing::fail_next(call, platform::SystemError::posix(EMFILE));
        EXPECT_THAT(support::failure_of(construct),
                    testing::HasSubstr("Caught exception when loading keys"));
        EXPECT_EQ(public_key() + private_key(), before);
        expect_keys_at_rest();
        EXPECT_NO_THROW(construct());
    }
    // Whoever holds a file for longer than the attempts last.
    const auto holder = platform::open_file(machine.private_key_file(), platform::FileAccess::read,
                                            platform::FileDisposition::open_existing,
                                            platform::FileSharing::none, {});
    ASSERT_TRUE(holder);
    EXPECT_THROW(construct(), std::exception);
    platform::close_file(*holder);
    EXPECT_EQ(public_key() + private_key(), before);
}

TEST_F(LifecycleTest, WhenRegenerationFailsTooTheErrorNamesBothFiles) {
    fs::create_directories(machine.root());
    support::write_file(machine.public_key_file(), "junk");
    fs::create_directory(machine.private_key_file()); // cannot be a key file
    const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
    const auto error = support::error_of(construct);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code(), qncertificates::error::qncertificates_parameter_invalid);
    EXPECT_EQ(error->text(), "Caught exception when loading keys for configuration file usage. "
                             "machinePublicKey: " +
                                 machine.public_key_file() +
                                 ", machinePrivateKey: " + machine.private_key_file() + ".");
    EXPECT_EQ(error->location().function.view(),
              "vdcertificates::ConfigurationFile::ConfigurationFile()");
    EXPECT_TRUE(error->nested());
    EXPECT_EQ(capture.lines().size(), 2U);
    EXPECT_THAT(capture.lines().back(),
                testing::HasSubstr("Caught exception when creating keys for configuration file "
                                   "usage. machinePublicKey: "));
    EXPECT_EQ(public_key(), "junk");
}

TEST_F(LifecycleTest, TheKeysStayInTheRootWhenTheVariableMovesTheFile) {
    const support::EnvironmentGuard variable("ORVA_Certificates", machine.file("moved.xml"));
    ConfigurationFile file;
    ASSERT_TRUE(file.set_cluster_certificate_information("p", "k", "c", "secret"));
    EXPECT_TRUE(fs::exists(machine.file("moved.xml")));
    EXPECT_FALSE(fs::exists(machine.default_file()));
    expect_keys_at_rest();
}

} // namespace
} // namespace store_test
