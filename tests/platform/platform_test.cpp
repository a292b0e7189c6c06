#include <cerrno>
#include <future>

#include "VDCertificatesFileUtilities/file_utilities.h"
#include "platform/file_system.h"
#include "platform/key_file.h"
#include "platform/machine.h"
#include "platform/name_service.h"
#include "tests/platform/platform_fixture.h"

namespace platform {
namespace {

constexpr Opener writer{FileAccess::write, FileSharing::read_write};
constexpr Opener reader{FileAccess::read, FileSharing::read_write};
constexpr Opener reader_alone{FileAccess::read, FileSharing::none};

CHILD_PROCESS(hold_file) {
    const Opener opener = all_openers().at(std::stoul(arguments.at(1)));
    const OpenFile file = opener.open(arguments.at(0));
    support::say(file ? "held" : "refused");
    support::wait_to_be_told();
    return 0;
}

TEST_F(FileTest, ShareModesInOneProcessAndBetweenTwo) {
    const std::vector<Opener> openers = all_openers();
    for (std::size_t i = 0; i < openers.size(); ++i) {
        const Opener& first = openers[i];
        support::ChildProcess child("hold_file", {name_, std::to_string(i)});
        child.wait_for("held");
        for (const Opener& second : openers) {
            SCOPED_TRACE(first.text() + " then " + second.text());
            const OpenFile other = second.open(name_);
            const bool admitted = first.admits(second) && second.admits(first);
            EXPECT_EQ(static_cast<bool>(other), admitted);
            EXPECT_EQ(other.error().is_sharing_violation(), !admitted);
            for (const Opener& third : openers) {
                EXPECT_EQ(static_cast<bool>(third.open(name_)),
                          first.admits(third) && third.admits(first) &&
                              (!admitted || (second.admits(third) && third.admits(second))))
                    << third.text();
            }
        }
        child.tell();
        EXPECT_EQ(child.wait(), 0);
    }
    EXPECT_TRUE(reader_alone.open(name_)) << "no lock is left";
}

TEST_F(FileTest, ARefusedOpenLeavesTheContent) {
    for (const auto disposition :
         {FileDisposition::create_always, FileDisposition::truncate_existing}) {
        {
            const OpenFile holder = reader_alone.open(name_);
            EXPECT_TRUE(writer.open(name_, disposition).error().is_sharing_violation());
        }
        EXPECT_EQ(content(), "content");
    }
}

TEST_F(FileTest, ExistenceAndCreation) {
    const std::string root = directory_.path().root_name().string();
    // path, whether it exists, whether it is a directory, whether create_directory() succeeds
    const std::tuple<std::string, bool, bool, bool> cases[] = {
        {name_, true, false, false},         {directory_.str(), true, true, true},
        {missing_, false, false, true},      {directory_.file("no/such"), false, false, false},
        {"", false, false, false},           {root.empty() ? "/" : root, true, true, true},
        {name_ + "/x", false, false, false},
    };
    for (const auto& [path, exists, is_one, is_one_afterwards] : cases) {
        SCOPED_TRACE(path);
        EXPECT_EQ(FileUtilities::located_file(path), exists);
        EXPECT_EQ(check_existence(path).is_not_found(), !exists);
        EXPECT_EQ(check_read_write_access(path).is_not_found(), !exists);
        EXPECT_EQ(is_directory(path), is_one);
        EXPECT_EQ(FileUtilities::create_directory(path), is_one_afterwards);
        EXPECT_EQ(is_directory(path), is_one_afterwards);
    }
}

TEST_F(FileTest, KeyFilesKeepTheirContentAndAreHeldAlone) {
    {
        const OpenFile made(open_key_file(missing_));
        ASSERT_TRUE(made) << describe(made.error());
        EXPECT_EQ(*write_file(made.get(), "key", 3), 3U);
        EXPECT_TRUE(OpenFile(open_key_file(missing_)).error().is_sharing_violation());
        EXPECT_TRUE(reader.open(missing_));
        EXPECT_FALSE(writer.open(missing_));
    }
    const OpenFile again(open_key_file(missing_));
    EXPECT_EQ(*file_size(again.get()), 3U);
    EXPECT_FALSE(OpenFile(open_key_file(directory_.str())));
    EXPECT_FALSE(OpenFile(open_key_file(directory_.file("no/such"))));
}

TEST(MachineTest, ComputerName) {
    EXPECT_NE(*computer_name(), "");
    testing::set_computer_name("OTHER");
    EXPECT_EQ(*computer_name(), "OTHER");
    testing::set_computer_name("");
    testing::fail_call(2, sharing_violation());
    EXPECT_TRUE(computer_name());
    EXPECT_EQ(computer_name().error(), sharing_violation());
    EXPECT_TRUE(computer_name()) << "a call fails once";
    EXPECT_EQ(testing::calls_made(), 3);
}

TEST(MachineTest, ErrorsAreClassifiedByTheSystemThatDefinesThem) {
    EXPECT_TRUE(sharing_violation().is_sharing_violation());
    EXPECT_TRUE(SystemError::windows(5).is_access_denied());
    EXPECT_TRUE(SystemError::posix(EACCES).is_access_denied());
    EXPECT_TRUE(SystemError::posix(ENOTDIR).is_not_found());
    EXPECT_FALSE(SystemError::windows(ENOENT + 100).is_not_found());
    EXPECT_NE(describe(SystemError::posix(ENOENT)), describe(SystemError::posix(EACCES)));
    EXPECT_NE(describe(SystemError::windows(2)), describe(SystemError::windows(5)));
}

TEST(MachineTest, AddressesAndOtherTexts) {
    const std::tuple<const char*, AddressFamily, bool> cases[] = {
        {"127.0.0.1", AddressFamily::ipv4, true},   {"::1", AddressFamily::ipv6, true},
        {"::1", AddressFamily::ipv4, false},        {"127.0.0.1", AddressFamily::ipv6, false},
        {"srv01.test", AddressFamily::ipv4, false},
    };
    EXPECT_EQ(start_name_service(), 0);
    for (const auto& [text, family, is_address] : cases) {
        SCOPED_TRACE(text);
        const HostName host = host_name_of_address(text, family);
        EXPECT_EQ(host.is_address, is_address);
        EXPECT_EQ(host.error, 0);
        EXPECT_EQ(!host.name.empty(), is_address);
    }
    EXPECT_EQ(stop_name_service(), 0);
}

SystemError in_another_thread(const std::function<SystemError()>& function) {
    return std::async(std::launch::async, function).get();
}

TEST_F(MutexTest, ItsThreadMayTakeItAgainAndOnlyThatReleasesIt) {
    NamedMutex other;
    ASSERT_FALSE(other.create(mutex_name));
    EXPECT_TRUE(mutex_.unlock()) << "not held";
    for (NamedMutex* const mutex : {&mutex_, &other, &mutex_}) {
        EXPECT_FALSE(mutex->lock());
    }
    EXPECT_TRUE(in_another_thread([&] { return mutex_.unlock(); }));
    for (NamedMutex* const mutex : {&other, &other, &mutex_}) {
        EXPECT_FALSE(mutex->unlock());
    }
    EXPECT_TRUE(mutex_.unlock()) << "once too often";
    EXPECT_FALSE(in_another_thread([&] {
        const SystemError error = mutex_.lock();
        return error ? error : other.unlock();
    }));
    EXPECT_FALSE(other.close());
}

CHILD_PROCESS(hold_mutex) {
    testing::set_mutex_name_suffix(arguments.at(0));
    NamedMutex mutex;
    if (mutex.create(mutex_name) || mutex.lock()) {
        return 1;
    }
    support::say("held");
    support::wait_to_be_told();
    return mutex.unlock() || mutex.close() ? 2 : 0;
}

TEST_F(MutexTest, AnotherProcessWaitsUntilItsHolderReleasesItOrIsKilled) {
    for (const bool killed : {true, false}) {
        support::ChildProcess child = holder();
        child.wait_for("held");
        auto waiting = std::async(std::launch::async, [&] {
            const SystemError error = mutex_.lock();
            return error ? error : mutex_.unlock();
        });
        EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
        killed ? child.kill() : child.tell();
        EXPECT_FALSE(waiting.get());
        EXPECT_EQ(child.wait(), killed ? -1 : 0);
    }
}

} // namespace
} // namespace platform
