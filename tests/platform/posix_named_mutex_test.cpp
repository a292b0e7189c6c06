#include <sys/stat.h>
#include <unistd.h>

#include "tests/platform/mutex_fixture.h"
#include "tests/support/account.h"
#include "tests/support/child_process.h"

namespace platform {
namespace {

constexpr const char* name = "Global\\{orva-test}";

CHILD_PROCESS(lock_as_nobody) {
    testing::set_mutex_name_suffix(arguments.at(0));
    NamedMutex mutex;
    if (!support::become_nobody() || mutex.create(name) || mutex.lock() || mutex.unlock() ||
        !mutex.unlock()) {
        return 1;
    }
    NamedMutex limited;
    return limited.open_limited(name) || limited.lock() || limited.unlock() ? 2 : 0;
}

TEST_F(MutexTest, AnotherAccountWaitsAndReleases) {
    if (!support::may_change_account()) {
        GTEST_SKIP() << "only root can become another account";
    }
    const mode_t mask = ::umask(077);
    NamedMutex mutex;
    const SystemError error = mutex.create(name);
    ::umask(mask);
    ASSERT_FALSE(error);
    EXPECT_FALSE(mutex.lock());
    EXPECT_FALSE(mutex.unlock());
    support::ChildProcess child("lock_as_nobody", {suffix_});
    EXPECT_EQ(child.wait(), 0);
    EXPECT_FALSE(mutex.close());
}

TEST_F(MutexTest, ANameThatCanBeNoObjectIsAnError) {
    NamedMutex mutex;
    EXPECT_TRUE(mutex.create("Global\\a/b"));
    EXPECT_TRUE(mutex.create(std::string(300, 'x')));
}

TEST_F(MutexTest, AHeldMutexMayBeClosed) {
    const std::string other_name = "Global\\{orva-other-test}";
    NamedMutex other;
    NamedMutex held;
    ASSERT_FALSE(other.create(other_name));
    ASSERT_FALSE(held.create(name));
    ASSERT_FALSE(held.lock());
    ASSERT_FALSE(held.close());
    EXPECT_FALSE(other.lock());
    EXPECT_FALSE(other.unlock());
    EXPECT_FALSE(other.close());
    testing::remove_named_mutex(other_name);

    NamedMutex again;
    ASSERT_FALSE(again.create(name));
    EXPECT_FALSE(again.unlock()) << "still held";
    EXPECT_TRUE(again.unlock());
    EXPECT_FALSE(again.close());
}

TEST_F(MutexTest, AForkedChildHoldsNothing) {
    NamedMutex mutex;
    ASSERT_FALSE(mutex.create(name));
    ASSERT_FALSE(mutex.lock());
    EXPECT_EXIT(::_exit(mutex.unlock() ? 0 : 1), ::testing::ExitedWithCode(0), "");
    EXPECT_FALSE(mutex.unlock());
    EXPECT_FALSE(mutex.close());
}

} // namespace
} // namespace platform
