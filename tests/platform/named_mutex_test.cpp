#include "tests/platform/mutex_fixture.h"

#include <array>
#include <future>
#include <memory>
#include <vector>

#include "tests/support/child_process.h"

namespace platform {
namespace {

constexpr const char* name = "Global\\{orva-test}";
constexpr int rounds = 100;

template <class Function>
SystemError in_another_thread(const Function& function) {
    return std::async(std::launch::async, function).get();
}

TEST_F(MutexTest, OneThreadMayTakeItAgain) {
    NamedMutex one;
    NamedMutex two;
    ASSERT_FALSE(one.create(name));
    ASSERT_FALSE(two.create(name));
    EXPECT_FALSE(one.lock());
    EXPECT_FALSE(two.lock());
    EXPECT_FALSE(one.lock());
    EXPECT_FALSE(two.unlock());
    EXPECT_FALSE(two.unlock());
    EXPECT_FALSE(one.unlock());
    EXPECT_TRUE(one.unlock()) << "once too often";
    EXPECT_FALSE(one.close());
    EXPECT_FALSE(two.close());
}

TEST_F(MutexTest, OnlyTheHolderReleases) {
    NamedMutex mutex;
    ASSERT_FALSE(mutex.create(name));
    EXPECT_TRUE(mutex.unlock());
    ASSERT_FALSE(mutex.lock());
    EXPECT_TRUE(in_another_thread([&] { return mutex.unlock(); }));
    EXPECT_FALSE(mutex.unlock());
    EXPECT_FALSE(in_another_thread([&] {
        const SystemError error = mutex.lock();
        return error ? error : mutex.unlock();
    }));
    EXPECT_FALSE(mutex.close());
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

/// Counts in a file under the mutex, which it is among the first to make.
CHILD_PROCESS(count) {
    testing::set_mutex_name_suffix(arguments.at(0));
    support::say("ready");
    support::wait_to_be_told();
    NamedMutex mutex;
    if (const SystemError error = mutex.create(name)) {
        support::say(describe(error));
        return 1;
    }
    for (int i = 0; i < rounds; ++i) {
        if (mutex.lock()) {
            return 2;
        }
        const int value = std::stoi(support::read_file(arguments.at(1)));
        support::write_file(arguments.at(1), std::to_string(value + 1));
        if (mutex.unlock()) {
            return 3;
        }
    }
    return 0;
}

TEST_F(MutexTest, EightFirstUsersAtOnce) {
    const std::string counter = directory_.file("counter");
    support::write_file(counter, "0");
    std::vector<std::unique_ptr<support::ChildProcess>> children;
    for (int i = 0; i < 8; ++i) {
        children.push_back(std::make_unique<support::ChildProcess>(
            "count", std::vector<std::string>{suffix_, counter}));
        children.back()->wait_for("ready");
    }
    for (const auto& child : children) {
        child->tell();
    }
    for (const auto& child : children) {
        EXPECT_EQ(child->wait(), 0) << child->next_line();
    }
    EXPECT_EQ(support::read_file(counter), std::to_string(8 * rounds));
}

} // namespace
} // namespace platform
