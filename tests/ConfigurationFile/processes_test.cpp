// The lock, and several processes on one machine.
#include <future>
#include <memory>
#include <optional>

#include "platform/testing/testing.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/failure.h"

namespace store_test {
namespace {

using Lock = vdcertificates::ConfigurationFileExclusiveAccessLock;
using support::ChildProcess;
using support::failure_of;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileMutex;

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
        EXPECT_THAT(failure_of(ConfigurationFileMutex::create), testing::HasSubstr(text));
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

// Required: a copy does not acquire, so that two of them release once too often.
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

class ProcessesTest : public StoreTest {
  protected:
    std::unique_ptr<ChildProcess> start(const char* function, const std::string& argument) {
        return std::make_unique<ChildProcess>(function, std::vector{machine.directory(), argument});
    }
};

CHILD_PROCESS(construct) {
    Machine::enter(arguments[0]);
    support::say("ready");
    support::wait_to_be_told();
    support::say(failure_of([] { const ConfigurationFile file; }));
    return 0;
}

TEST_F(ProcessesTest, TwoOnAFreshMachineMakeOnePair) {
    const auto first = start("construct", "");
    const auto second = start("construct", "");
    for (const auto& child : {first.get(), second.get()}) {
        child->wait_for("ready");
        child->tell();
    }
    for (const auto& child : {first.get(), second.get()}) {
        EXPECT_EQ(child->next_line(), "");
        EXPECT_EQ(child->wait(), 0);
    }
    const std::string made = support::read_file(machine.private_key_file());
    { const ConfigurationFile loads_the_keys; }
    EXPECT_EQ(support::read_file(machine.private_key_file()), made);
}

CHILD_PROCESS(write_entries) {
    Machine::enter(arguments[0]);
    ConfigurationFile file;
    for (int i = 0; i < 40; ++i) {
        const std::string server = "S" + arguments[1] + "-" + std::to_string(i);
        vdcertificates::ConfigurationFileNodes nodes;
        if (!file.set_devices_certificate_information(server, "p", "k", "c", "", "t") ||
            !file.get_additional_certificate_information(nodes)) { // at any moment
            return 1;
        }
    }
    return 0;
}

TEST_F(ProcessesTest, ManyWritersDisturbNoReader) {
    ConfigurationFile file;
    ASSERT_TRUE(file.set_cluster_certificate_information("p", "k", "c", "secret"));
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (const char* number : {"0", "1", "2", "3"}) {
        children.push_back(start("write_entries", number));
    }
    for (const auto& child : children) {
        std::string password;
        std::string other;
        EXPECT_TRUE(file.get_cluster_certificate_information(other, other, other, password));
        EXPECT_EQ(password, "secret");
        EXPECT_EQ(child->wait(), 0);
    }
    // A change is not atomic as a whole, so some entries may have been overwritten.
    const auto nodes = vdcertificates::ConfigurationFileAccess::read(
        file, vdcertificates::ConfigurationFileAccess::devices);
    EXPECT_FALSE(nodes.notifiers.empty());
    for (const auto& [server, entries] : nodes.notifiers) {
        ASSERT_EQ(entries.size(), 1U) << server;
        EXPECT_EQ(show(entries[0]), "SIPDevice(p,k,c,,t)") << server;
    }
}

} // namespace
} // namespace store_test
