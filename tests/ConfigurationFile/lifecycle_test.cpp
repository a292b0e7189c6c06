// The keys of a machine and the lock, in one process and in two.
#include <filesystem>
#include <future>
#include <optional>

#include "platform/file.h"
#include "platform/testing/testing.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/failure.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

namespace fs = std::filesystem;
using Lock = vdcertificates::ConfigurationFileExclusiveAccessLock;
using support::failure_of;
using testing::HasSubstr;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileMutex;

class LifecycleTest : public StoreTest {
  protected:
    static void construct() { const ConfigurationFile file; }

    std::string public_key() const { return support::read_file(machine.public_key_file()); }
    std::string private_key() const { return support::read_file(machine.private_key_file()); }

    /// Constructs, and returns whether the keys have changed. Checks that they are read-only.
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

    const std::string files_ = "machinePublicKey: " + machine.public_key_file() +
                               ", machinePrivateKey: " + machine.private_key_file();
    const support::TraceCapture trace_{"VDCertificatesConfigurationFile=11"};

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
    EXPECT_TRUE(has_secret(second));
    const ConfigurationFile copy(first);
    support::remove_all(machine.root());
    ConfigurationFile assigned; // makes new keys
    EXPECT_FALSE(has_secret(assigned));
    assigned = copy;
    EXPECT_TRUE(has_secret(assigned));
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
    // Held for longer than the attempts take.
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
    EXPECT_EQ(failure_of(construct),
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

using LockTest = StoreTest;

TEST_F(LockTest, NamesTheErrorOfTheSystem) {
    EXPECT_EQ(ConfigurationFileMutex::sm_configurationFileMutexName,
              "Global\\{2780CEA8-95DE-41D1-955F-C2A000BD437A}");
    const auto mutex = ConfigurationFileMutex::create();
    const auto info = support::error_of([&] { mutex->release_lock(); }); // is not held
    ASSERT_TRUE(info && info->nested());
    EXPECT_EQ(*info->nested()->params().find("number"), *info->params().find("errorCode"));
    EXPECT_EQ(failure_of([&] { mutex->release_lock(); }),
              "error.qncertificates.parameter.invalid "
              "vdcertificates::ConfigurationFileMutex::release_lock() Failed to unlock "
              "configuration file mutex. ErrorCode: " +
                  *info->params().find("errorCode"));
}

TEST_F(LockTest, OpensAMutexOfAnotherAccountWithFewerRights) {
    const auto creation_fails = [](unsigned long number, const std::string& text) {
        platform::testing::fail_next(platform::Call::create_mutex,
                                     platform::SystemError::windows(number));
        EXPECT_THAT(failure_of(ConfigurationFileMutex::create), HasSubstr(text));
    };
    creation_fails(87, "Failed to initialized configuration file mutex. ErrorCode: 87");
    creation_fails(5, "Failed to open existing configuration file mutex with limited permissions. "
                      "ErrorCode: 2");
    const auto owner = ConfigurationFileMutex::create();
    owner->acquire_lock();
    platform::testing::fail_next(platform::Call::create_mutex, platform::SystemError::windows(5));
    const auto limited = ConfigurationFileMutex::create();
    auto waiting = std::async(std::launch::async, [&] { const Lock lock(limited); });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    owner->release_lock();
    waiting.get();
    EXPECT_THROW(limited->release_lock(), qncore::ErrorException);
}

// Required: a copy does not acquire the mutex, so two of them release it once too often.
TEST_F(LockTest, IsReleasedByEachCopy) {
    const auto mutex = ConfigurationFileMutex::create();
    EXPECT_THROW(
        {
            const Lock lock(mutex);
            const Lock copy(lock); // NOLINT(performance-unnecessary-copy-initialization)
        },
        qncore::ErrorException);

    std::optional<Lock> first(mutex);
    const auto otherMutex = ConfigurationFileMutex::create();
    std::optional<Lock> second(otherMutex); // the same machine-wide mutex, taken once more
    *first = *second;
    first.reset();
    second.reset();
    EXPECT_THROW(mutex->release_lock(), qncore::ErrorException);
}

CHILD_PROCESS(construct) {
    Machine::enter(arguments[0]);
    support::say("ready");
    support::wait_to_be_told();
    support::say(failure_of([] { const ConfigurationFile file; }));
    return 0;
}

using ProcessesTest = StoreTest;

TEST_F(ProcessesTest, TwoOnAFreshMachineMakeOnePair) {
    support::ChildProcess first("construct", {machine.directory()});
    support::ChildProcess second("construct", {machine.directory()});
    for (support::ChildProcess* const child : {&first, &second}) {
        child->wait_for("ready");
        child->tell();
    }
    for (support::ChildProcess* const child : {&first, &second}) {
        EXPECT_EQ(child->next_line(), "");
        EXPECT_EQ(child->wait(), 0);
    }
    const std::string made = support::read_file(machine.private_key_file());
    { const ConfigurationFile loads_the_keys; }
    EXPECT_EQ(support::read_file(machine.private_key_file()), made);
}

} // namespace
} // namespace store_test
