#include <csignal>
#include <fcntl.h>
#include <future>
#include <pthread.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

#include "platform/key_file.h"
#include "platform/posix/lock_file.h"
#include "tests/platform/mutex_fixture.h"
#include "tests/platform/openers.h"
#include "tests/support/child_process.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr Opener alone{FileAccess::read_write, FileSharing::none};

/// True if some process holds a flock() of the file.
bool is_locked(const std::string& path) {
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_GE(file, 0);
    const bool locked = ::flock(file, LOCK_EX | LOCK_NB) != 0;
    ::close(file);
    return locked;
}

mode_t mode_of(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
    return status.st_mode & 07777;
}

CHILD_PROCESS(lock_as_nobody) {
    testing::set_mutex_name_suffix(arguments.at(0));
    ::umask(077);
    if (!support::become_nobody()) {
        return 1;
    }
    NamedMutex mutex;
    if (const SystemError error = mutex.create(name)) {
        NamedMutex limited;
        return error.is_access_denied() && limited.open_limited(name) == error ? 2 : 3;
    }
    NamedMutex limited;
    return mutex.lock() || mutex.unlock() || !mutex.unlock() || limited.open_limited(name) ||
                   limited.lock() || limited.unlock()
               ? 4
               : 0;
}

TEST_F(MutexTest, EveryAccountUsesItWhoeverMadeIt) {
    if (!support::may_change_account()) {
        GTEST_SKIP() << "only root can become another account";
    }
    const std::string path = *lock_file_path(name);
    const auto nobody = [&] { return support::ChildProcess("lock_as_nobody", {suffix_}).wait(); };
    for (const bool root_is_first : {true, false}) {
        const mode_t mask = ::umask(077);
        if (root_is_first) {
            EXPECT_FALSE(NamedMutex().create(name));
        }
        ::umask(mask);
        EXPECT_EQ(nobody(), 0);
        EXPECT_EQ(mode_of(path), 0444U);
        NamedMutex mutex;
        ASSERT_FALSE(mutex.create(name));
        EXPECT_FALSE(mutex.lock());
        EXPECT_FALSE(mutex.unlock());
        fs::remove(path);
    }
    support::write_file(path, "");
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(nobody(), 2) << "refused";
}

TEST_F(MutexTest, OnlyARegularFileIsLocked) {
    const std::string path = *lock_file_path(name);
    const std::string target = directory_.file("target");
    const struct {
        const char* what;
        std::function<void()> make;
        int error;
    } cases[] = {
        {"a link to nothing", [&] { fs::create_symlink(target, path); }, ELOOP},
        {"a link to a file",
         [&] {
             support::write_file(target, "");
             fs::create_symlink(target, path);
         },
         ELOOP},
        {"a pipe", [&] { EXPECT_EQ(::mkfifo(path.c_str(), 0666), 0); }, EINVAL},
        {"a directory", [&] { fs::create_directory(path); }, EINVAL},
    };
    NamedMutex mutex;
    EXPECT_TRUE(mutex.open_limited(name).is_not_found());
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_FALSE(mutex.create(name));
        fs::remove(path);
        c.make();
        EXPECT_EQ(mutex.create(name), SystemError::posix(c.error));
        EXPECT_EQ(mutex.open_limited(name), SystemError::posix(c.error));
        EXPECT_EQ(mutex.lock(), SystemError::posix(c.error)) << "created before";
        EXPECT_EQ(mutex.unlock(), SystemError::posix(EPERM));
        fs::remove(path);
    }
    EXPECT_TRUE(mutex.create("Global\\a/b"));
    EXPECT_TRUE(mutex.create(std::string(300, 'x')));
}

TEST_F(MutexTest, AWaitSurvivesSignalsAndAnExchangedFile) {
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = [](int) {};
    ASSERT_EQ(::sigaction(SIGUSR1, &action, &before), 0); // without SA_RESTART
    const std::string path = *lock_file_path(name);
    NamedMutex mutex;
    for (const bool is_replaced : {false, true}) {
        support::ChildProcess child("hold_mutex", {suffix_});
        child.wait_for("held");
        ASSERT_FALSE(mutex.create(name));
        bool holds_the_named_one = false;
        std::thread waiting([&] {
            EXPECT_FALSE(mutex.lock());
            holds_the_named_one = is_locked(path);
            EXPECT_FALSE(mutex.unlock());
        });
        while (highest_lock_descriptor() < 0) { // it has not opened the file
            std::this_thread::yield();
        }
        for (int i = 0; i < 10; ++i) {
            ::pthread_kill(waiting.native_handle(), SIGUSR1);
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        fs::remove(path);
        if (is_replaced) {
            support::write_file(path, "");
        }
        child.tell();
        waiting.join();
        EXPECT_TRUE(holds_the_named_one);
        EXPECT_EQ(child.wait(), 0);
    }
    ::sigaction(SIGUSR1, &before, nullptr);
}

CHILD_PROCESS(hold_mutex_and_fork) {
    testing::set_mutex_name_suffix(arguments.at(0));
    NamedMutex mutex;
    if (mutex.create(name) || mutex.lock()) {
        return 1;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        support::say("forked");
        support::wait_to_be_told(); // until the test has ended
        ::_exit(0);
    }
    return child < 0 ? 2 : ::pause();
}

TEST_F(MutexTest, AForkedChildHoldsNothingAndKeepsNothingLocked) {
    NamedMutex mutex;
    ASSERT_FALSE(mutex.create(name));
    ASSERT_FALSE(mutex.lock());
    EXPECT_EXIT(::_exit(mutex.unlock() == SystemError::posix(EPERM) &&
                                highest_lock_descriptor() == -1 && is_locked(*lock_file_path(name))
                            ? 0
                            : 1),
                ::testing::ExitedWithCode(0), "");
    EXPECT_TRUE(is_locked(*lock_file_path(name)));
    EXPECT_FALSE(mutex.unlock());

    support::ChildProcess holder("hold_mutex_and_fork", {suffix_});
    holder.wait_for("forked");
    EXPECT_TRUE(is_locked(*lock_file_path(name)));
    holder.kill();
    EXPECT_EQ(holder.wait(), -1);
    EXPECT_FALSE(is_locked(*lock_file_path(name))) << "its child lives";
}

TEST_F(MutexTest, FilesLieAboveItAlsoWhenItIsClosed) {
    const int low = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    NamedMutex mutex;
    ASSERT_FALSE(mutex.create(name));
    ASSERT_FALSE(mutex.lock());
    ::close(low);
    const int lock = highest_lock_descriptor();
    ASSERT_GT(lock, low);
    support::write_file(directory_.file("file"), "");
    const OpenFile file = alone.open(directory_.file("file"));
    const OpenFile key(open_key_file(directory_.file("key")));
    for (const FileHandle descriptor : {FileHandle{lock}, file.get(), key.get()}) {
        EXPECT_GE(descriptor, lock);
        EXPECT_EQ(::fcntl(static_cast<int>(descriptor), F_GETFD), FD_CLOEXEC);
    }
    EXPECT_FALSE(mutex.close()) << "and stays held";
    NamedMutex again;
    ASSERT_FALSE(again.create(name));
    EXPECT_FALSE(again.unlock());
    EXPECT_EQ(highest_lock_descriptor(), -1);
}

/// Has a file open under the mutex, with memory whose release takes time, till it is killed.
CHILD_PROCESS(read_under_mutex) {
    testing::set_mutex_name_suffix(arguments.at(0));
    const std::vector<char> memory(std::stoul(arguments.at(2)) << 20, 'x');
    const int low = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    NamedMutex mutex;
    if (mutex.create(name) || mutex.lock()) {
        return 1;
    }
    ::close(low);
    const OpenFile file = alone.open(arguments.at(1));
    support::say(file ? "held" : describe(file.error()));
    support::wait_to_be_told();
    return memory.back();
}

TEST_F(MutexTest, TheShareModesOfAKilledProcessGoBeforeItsMutex) {
    const std::string file = directory_.file("file");
    support::write_file(file, "content");
    NamedMutex mutex;
    ASSERT_FALSE(mutex.create(name));
    for (const char* megabytes : {"1", "1", "1", "1", "1", "1", "1", "1", "30", "30", "30", "30"}) {
        support::ChildProcess child("read_under_mutex", {suffix_, file, megabytes});
        child.wait_for("held");
        child.kill();
        ASSERT_FALSE(mutex.lock());
        EXPECT_TRUE(alone.open(file)) << "refused by a dead process";
        EXPECT_FALSE(mutex.unlock());
    }
}

} // namespace
} // namespace platform
