#include <csignal>
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

#include "platform/key_file.h"
#include "platform/posix/lock_file.h"
#include "tests/platform/platform_fixture.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr Opener alone{FileAccess::read_write, FileSharing::none};

class PosixMutexTest : public MutexTest {
  protected:
    PosixMutexTest() { support::write_file(file_, "content"); }

    /// True if some process holds a flock() of the lock file.
    bool is_locked() const {
        const int file = ::open(path_.c_str(), O_RDONLY | O_CLOEXEC);
        EXPECT_GE(file, 0);
        const bool locked = ::flock(file, LOCK_EX | LOCK_NB) != 0;
        ::close(file);
        return locked;
    }

    std::string path_ = *lock_file_path(mutex_name);
    std::string file_ = directory_.file("file");
};

/// Returns 0 if every account can use the mutex, 1 if this one is denied it.
int lock_as_nobody() {
    NamedMutex mutex;
    NamedMutex limited;
    ::umask(077);
    if (!support::become_nobody()) {
        return 2;
    }
    if (const SystemError error = mutex.create(mutex_name)) {
        return error.is_access_denied() && limited.open_limited(mutex_name) == error ? 1 : 3;
    }
    return mutex.lock() || mutex.unlock() || !mutex.unlock() || limited.open_limited(mutex_name) ||
                   limited.lock() || limited.unlock()
               ? 4
               : 0;
}

TEST_F(PosixMutexTest, EveryAccountUsesItWhoeverMadeIt) {
    if (!support::may_change_account()) {
        GTEST_SKIP() << "only root can become another account";
    }
    for (const bool root_is_first : {false, true}) {
        fs::remove(path_);
        const mode_t mask = ::umask(077);
        EXPECT_FALSE(root_is_first && NamedMutex().create(mutex_name));
        ::umask(mask);
        EXPECT_EXIT(::_exit(lock_as_nobody()), ::testing::ExitedWithCode(0), "");
        EXPECT_EQ(fs::status(path_).permissions(), fs::perms{0444});
        EXPECT_FALSE(NamedMutex().create(mutex_name));
        EXPECT_FALSE(mutex_.lock());
        EXPECT_FALSE(mutex_.unlock());
    }
    fs::permissions(path_, fs::perms{0600});
    EXPECT_EXIT(::_exit(lock_as_nobody()), ::testing::ExitedWithCode(1), "");
}

TEST_F(PosixMutexTest, OnlyARegularFileIsLocked) {
    fs::remove(path_);
    EXPECT_TRUE(NamedMutex().open_limited(mutex_name).is_not_found());
    for (const int error : {ELOOP, EINVAL}) {
        if (error == ELOOP) {
            fs::create_symlink(file_, path_);
        } else {
            ASSERT_EQ(::mkfifo(path_.c_str(), 0666), 0);
        }
        EXPECT_EQ(NamedMutex().create(mutex_name), SystemError::posix(error));
        EXPECT_EQ(NamedMutex().open_limited(mutex_name), SystemError::posix(error));
        EXPECT_EQ(mutex_.lock(), SystemError::posix(error)) << "created before";
        EXPECT_EQ(mutex_.unlock(), SystemError::posix(EPERM));
        fs::remove(path_);
    }
    EXPECT_TRUE(NamedMutex().create("Global\\a/b"));
    EXPECT_TRUE(NamedMutex().create(std::string(300, 'x')));
}

TEST_F(PosixMutexTest, AWaitSurvivesSignalsAndAnExchangedFile) {
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0); // without SA_RESTART
    for (const bool is_replaced : {false, true}) {
        support::ChildProcess child = holder();
        child.wait_for("held");
        bool holds_the_named_one = false;
        std::thread waiting([&] {
            EXPECT_FALSE(mutex_.lock());
            holds_the_named_one = is_locked();
            EXPECT_FALSE(mutex_.unlock());
        });
        while (highest_lock_descriptor() < 0) { // it has not opened the file
            std::this_thread::yield();
        }
        for (int i = 0; i < 10; ++i) {
            ::pthread_kill(waiting.native_handle(), SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        fs::remove(path_);
        if (is_replaced) {
            support::write_file(path_, "");
        }
        child.tell();
        waiting.join();
        EXPECT_TRUE(holds_the_named_one);
        EXPECT_EQ(child.wait(), 0);
    }
    ::sigaction(SIGUSR1, &before, nullptr);
}

TEST_F(PosixMutexTest, AForkedChildHoldsNothingAndKeepsNothingLocked) {
    ASSERT_FALSE(mutex_.lock());
    const int lock = highest_lock_descriptor();
    EXPECT_EXIT(::_exit(mutex_.unlock() == SystemError::posix(EPERM) &&
                                highest_lock_descriptor() == -1 && ::fcntl(lock, F_GETFD) == -1 &&
                                is_locked()
                            ? 0
                            : 1),
                ::testing::ExitedWithCode(0), "");
    EXPECT_TRUE(is_locked());
    EXPECT_FALSE(mutex_.unlock());
}

TEST_F(PosixMutexTest, FilesHaveHigherDescriptorsAndAClosedMutexStaysHeld) {
    const int low = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ASSERT_FALSE(mutex_.lock());
    ::close(low);
    const int lock = highest_lock_descriptor();
    ASSERT_GT(lock, low);
    const OpenFile file = alone.open(file_);
    const OpenFile key(open_key_file(directory_.file("key")));
    for (const FileHandle descriptor : {FileHandle{lock}, file.get(), key.get()}) {
        EXPECT_GE(descriptor, lock);
        EXPECT_EQ(::fcntl(static_cast<int>(descriptor), F_GETFD), FD_CLOEXEC);
    }
    EXPECT_FALSE(mutex_.close());
    EXPECT_TRUE(is_locked());
    ASSERT_FALSE(mutex_.create(mutex_name));
    EXPECT_FALSE(mutex_.unlock());
    EXPECT_EQ(highest_lock_descriptor(), -1);
}

/// Has a file open under the mutex, with memory whose release takes time, until it is killed.
CHILD_PROCESS(read_under_mutex) {
    testing::set_mutex_name_suffix(arguments.at(0));
    const std::vector<char> memory(std::stoul(arguments.at(2)) << 20, 'x');
    const int low = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    NamedMutex mutex;
    if (mutex.create(mutex_name) || mutex.lock()) {
        return 1;
    }
    ::close(low);
    const OpenFile file = alone.open(arguments.at(1));
    support::say(file ? "held" : describe(file.error()));
    support::wait_to_be_told();
    return memory.back();
}

TEST_F(PosixMutexTest, TheShareModesOfAKilledProcessEndBeforeItsMutex) {
    for (const char* megabytes : {"1", "1", "1", "1", "1", "1", "1", "1", "30", "30", "30", "30"}) {
        support::ChildProcess child("read_under_mutex", {suffix_, file_, megabytes});
        child.wait_for("held");
        child.kill();
        ASSERT_FALSE(mutex_.lock());
        EXPECT_TRUE(alone.open(file_)) << "refused by a dead process";
        EXPECT_FALSE(mutex_.unlock());
    }
}

} // namespace
} // namespace platform
