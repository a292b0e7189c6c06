#include <future>
#include <optional>

#include "platform/testing/testing.h"
#include "qncertificates/errors.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/failure.h"

namespace store_test {
namespace {

using vdcertificates::ConfigurationFileMutex;
using Lock = vdcertificates::ConfigurationFileExclusiveAccessLock;

using LockTest = StoreTest;

TEST_F(LockTest, TheNameIsTheSameInEveryBuild) {
    EXPECT_EQ(ConfigurationFileMutex::sm_configurationFileMutexName,
              "Global\\{2780CEA8-95DE-41D1-955F-C2A000BD437A}");
}

TEST_F(LockTest, ReleasingWhatIsNotHeldIsAnError) {
    const auto mutex = ConfigurationFileMutex::create();
    const auto info = support::error_of([&] { mutex->release_lock(); });
    ASSERT_TRUE(info);
    EXPECT_EQ(info->code(), qncertificates::error::qncertificates_parameter_invalid);
    EXPECT_EQ(info->text(), "Failed to unlock configuration file mutex. ErrorCode: " +
                                *info->params().find("errorCode"));
    EXPECT_EQ(info->location().function.view(),
              "vdcertificates::ConfigurationFileMutex::release_lock()");
    EXPECT_EQ(*info->nested()->params().find("number"), *info->params().find("errorCode"));
}

TEST_F(LockTest, AMutexOfAnotherAccountIsOpenedWithFewerRights) {
    const auto refused = platform::SystemError::windows(5);
    const auto creation_fails = [](platform::SystemError error, const std::string& text) {
        platform::testing::fail_next(platform::Call::create_mutex, error);
        EXPECT_THAT(support::failure_of(ConfigurationFileMutex::create), testing::HasSubstr(text));
    };
    creation_fails(platform::SystemError::windows(87),
                   "Failed to initialized configuration file mutex. ErrorCode: 87");
    creation_fails(refused, "Failed to open existing configuration file mutex with limited "
                            "permissions. ErrorCode: 2");
    const auto owner = ConfigurationFileMutex::create();
    owner->acquire_lock();
    platform::testing::fail_next(platform::Call::create_mutex, refused);
    const auto limited = ConfigurationFileMutex::create();
    auto waiting = std::async(std::launch::async, [&] { const Lock lock(limited); });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    owner->release_lock();
    waiting.get();
    EXPECT_THROW(limited->release_lock(), qncore::ErrorException);
}

// Required: a copy does not acquire, so that two of them release once too often.
TEST_F(LockTest, ALockAndItsCopyReleaseTwice) {
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

} // namespace
} // namespace store_test
