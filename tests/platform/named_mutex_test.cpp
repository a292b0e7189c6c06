#include "tests/platform/mutex_fixture.h"

#include <future>

#include "tests/support/child_process.h"

namespace platform {
namespace {

template <class Function>
SystemError in_another_thread(const Function& function) {
    return std::async(std::launch::async, function).get();
}

TEST_F(MutexTest, ItsThreadMayTakeItAgainAndOnlyThatReleasesIt) {
    NamedMutex one;
    NamedMutex two;
    ASSERT_FALSE(one.create(name));
    ASSERT_FALSE(two.create(name));
    EXPECT_TRUE(one.unlock()) << "not held";
    for (NamedMutex* const mutex : {&one, &two, &one}) {
        EXPECT_FALSE(mutex->lock());
    }
    EXPECT_TRUE(in_another_thread([&] { return one.unlock(); }));
    for (NamedMutex* const mutex : {&two, &two, &one}) {
        EXPECT_FALSE(mutex->unlock());
    }
    EXPECT_TRUE(one.unlock()) << "once too often";
    EXPECT_FALSE(in_another_thread([&] {
        const SystemError error = one.lock();
        return error ? error : two.unlock();
    }));
    EXPECT_FALSE(one.close());
    EXPECT_FALSE(two.close());
}

CHILD_PROCESS(hold_mutex) {
    testing::set_mutex_name_suffix(arguments.at(0));
    NamedMutex mutex;
    if (mutex.create(name) || mutex.lock()) {
        return 1;
    }
    support::say("held");
    support::wait_to_be_told();
    return mutex.unlock() || mutex.close() ? 2 : 0;
}

TEST_F(MutexTest, AnotherProcessWaits) {
    support::ChildProcess child("hold_mutex", {suffix_});
    child.wait_for("held");
    NamedMutex mutex;
    ASSERT_FALSE(mutex.create(name));
    auto waiting = std::async(std::launch::async, [&] {
        const SystemError error = mutex.lock();
        return error ? error : mutex.unlock();
    });
    EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    child.tell();
    EXPECT_FALSE(waiting.get());
    EXPECT_EQ(child.wait(), 0);
    EXPECT_FALSE(mutex.close());
}

TEST_F(MutexTest, AKilledHolderLeavesItToTheNext) {
    NamedMutex mutex;
    ASSERT_FALSE(mutex.create(name));
    for (int i = 0; i < 2; ++i) {
        support::ChildProcess child("hold_mutex", {suffix_});
        child.wait_for("held");
        child.kill();
        EXPECT_EQ(child.wait(), -1);
        EXPECT_FALSE(mutex.lock());
        EXPECT_FALSE(mutex.unlock());
    }
    EXPECT_FALSE(mutex.close());
}

} // namespace
} // namespace platform
