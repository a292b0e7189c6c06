#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <future>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

#include "platform/file_system.h"
#include "platform/key_file.h"
#include "platform/machine.h"
#include "platform/program.h"
#include "tests/platform/platform_fixture.h"

namespace platform {
namespace {

namespace fs = std::filesystem;

constexpr gid_t some_group = 65533;
constexpr Opener reader{FileAccess::read, FileSharing::read_write};
constexpr Opener writer_alone{FileAccess::write, FileSharing::none};

class PosixFileTest : public FileTest {
  protected:
    ~PosixFileTest() override { ::close(stranger_); }

    int stranger_ = ::open(name_.c_str(), O_RDWR | O_CLOEXEC); ///< of another program
};

TEST_F(PosixFileTest, AStrangersLockCountsAsAnExclusiveOpener) {
    struct flock all = {};
    for (const short kind : {short{F_RDLCK}, short{F_WRLCK}, short{F_UNLCK}}) {
        all.l_type = kind;
        ASSERT_EQ(::fcntl(stranger_, F_OFD_SETLK, &all), 0);
        for (const Opener& opener : all_openers()) {
            EXPECT_EQ(opener.open(name_).error().is_sharing_violation(), kind != F_UNLCK)
                << opener.text();
        }
    }
    ASSERT_EQ(::flock(stranger_, LOCK_SH), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(reader.open(name_).error().is_sharing_violation());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
}

TEST_F(PosixFileTest, WhatIsEmptiedIsEmptyWhateverItHeldBefore) {
    for (const auto disposition :
         {FileDisposition::create_always, FileDisposition::truncate_existing}) {
        support::write_file(name_, "");
        ASSERT_EQ(::flock(stranger_, LOCK_EX), 0);
        auto waiting = std::async(std::launch::async,
                                  [&] { return bool(writer_alone.open(name_, disposition)); });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ASSERT_EQ(::write(stranger_, "content", 7), 7);
        ASSERT_EQ(::flock(stranger_, LOCK_UN), 0);
        EXPECT_TRUE(waiting.get());
        EXPECT_EQ(content(), "");
    }
}

TEST_F(PosixFileTest, AClosedFileIsFreeThoughAForkedChildHasIt) {
    const auto file =
        open_file(name_, FileAccess::write, FileDisposition::open_existing, FileSharing::none, {});
    const int inherited = ::dup(static_cast<int>(*file));
    close_file(*file);
    EXPECT_TRUE(writer_alone.open(name_));
    ::close(inherited);
}

TEST_F(PosixFileTest, OnlyFilesAndCharacterDevicesAreOpened) {
    ASSERT_EQ(::mkfifo(missing_.c_str(), 0666), 0);
    for (const std::string& name : {missing_, directory_.str()}) {
        for (const Opener& opener : all_openers()) {
            EXPECT_FALSE(opener.open(name)) << name << ' ' << opener.text();
            EXPECT_FALSE(opener.open(name, FileDisposition::create_always)) << name;
        }
    }
    EXPECT_FALSE(OpenFile(open_key_file(missing_)));
    const OpenFile device = writer_alone.open("/dev/null", FileDisposition::create_always);
    EXPECT_TRUE(writer_alone.open("/dev/null")) << "a device has no share modes";
    EXPECT_EQ(::fcntl(static_cast<int>(device.get()), F_GETFL) & O_NONBLOCK, 0);

    auto writing = std::async(std::launch::async, [&] { support::write_file(missing_, "secret"); });
    const OpenFile input(open_input(missing_));
    char text[6] = {};
    EXPECT_EQ(*read_file(input.get(), text, 6), 6U);
}

TEST_F(PosixFileTest, AWriteGoesOnAfterAPart) {
    constexpr std::uint32_t largest = UINT32_MAX;
    void* memory =
        ::mmap(nullptr, largest, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    EXPECT_EQ(*write_file(writer_alone.open("/dev/null").get(), memory, largest), largest);
    ::munmap(memory, largest);

    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit four_bytes = {4, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &four_bytes), 0);
    EXPECT_EQ(*write_file(stranger_, "content", 7), 4U);
    EXPECT_EQ(write_file(stranger_, "ent", 3).error(), SystemError::posix(EFBIG));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
}

/// Makes a system call fail from now on if its second or third argument has all these bits.
bool let_fail(unsigned int call, unsigned int argument, unsigned int bits, unsigned int error) {
    const auto place = static_cast<unsigned int>(offsetof(seccomp_data, args[0])) + 8 * argument;
    sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call, 0, 4),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, place),
        BPF_STMT(BPF_ALU | BPF_AND | BPF_K, bits),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, bits, 0, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | error),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    const sock_fprog filter{std::size(program), program};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &filter) == 0;
}

TEST_F(PosixFileTest, FailuresOfLocksAndOfFilesWithoutAName) {
    // call, argument, bits, its error, what the open of a new key file reports
    const std::tuple<unsigned int, unsigned int, unsigned int, unsigned int, int> cases[] = {
        {SYS_flock, 1, LOCK_EX, ENOLCK, 0},        // no locks at all
        {SYS_fcntl, 1, F_OFD_SETLK, ENOLCK, 0},    // no locks of ranges
        {SYS_flock, 1, LOCK_EX, EIO, EIO},         // the guard fails
        {SYS_fcntl, 1, F_OFD_GETLK, EIO, EIO},     // the search for other openers fails
        {SYS_fcntl, 1, F_OFD_SETLK, EIO, EIO},     // a lock fails
        {SYS_openat, 2, O_TMPFILE, EOPNOTSUPP, 0}, // no files without a name
        {SYS_fchmod, 1, 0, EIO, EIO},              // no change of the mode
    };
    for (const auto& [call, argument, bits, error, result] : cases) {
        SCOPED_TRACE(::testing::Message() << call << " fails with " << error);
        EXPECT_EXIT(
            {
                ::umask(0777);
                const bool filtered = let_fail(call, argument, bits, error);
                const OpenFile file(open_key_file(missing_));
                ::_exit(filtered ? static_cast<int>(file.error().number()) : 255);
            },
            ::testing::ExitedWithCode(result), "");
        EXPECT_EQ(fs::status(missing_).permissions(),
                  result == 0 ? fs::perms{0600} : fs::perms::unknown)
            << "a failure leaves nothing";
        fs::remove(missing_);
    }
}

TEST_F(PosixFileTest, KeyFilesHaveTheirModeWhateverTheMask) {
    EXPECT_TRUE(set_key_file_writable(missing_, true).is_not_found());
    for (const bool shared : {false, true}) {
        if (shared && !support::may_change_account()) {
            GTEST_SKIP() << "only root can give a directory to any group";
        }
        const auto key_mode = [shared](unsigned int owner) {
            return fs::perms{owner | (shared ? 040 : 0)};
        };
        ASSERT_EQ(::chown(directory_.str().c_str(), ::geteuid(), shared ? some_group : ::getegid()),
                  0);
        ASSERT_EQ(::chmod(directory_.str().c_str(), shared ? 02770 : 0700), 0);
        for (const mode_t mask : {mode_t{0}, mode_t{077}, mode_t{0777}}) {
            SCOPED_TRACE(std::to_string(mask) + (shared ? " shared" : ""));
            const std::string key = directory_.file("key");
            const std::string document = directory_.file("document");
            const mode_t before = ::umask(mask);
            ASSERT_TRUE(OpenFile(open_key_file(key)));
            EXPECT_EQ(fs::status(key).permissions(), key_mode(0600));
            EXPECT_FALSE(set_key_file_writable(key, false));
            EXPECT_EQ(fs::status(key).permissions(), key_mode(0400));
            EXPECT_FALSE(set_key_file_writable(key, true));
            EXPECT_EQ(fs::status(key).permissions(), key_mode(0600));
            fs::permissions(key, fs::perms{0604});
            ASSERT_TRUE(OpenFile(open_key_file(key)));
            EXPECT_EQ(fs::status(key).permissions(), fs::perms{0604}) << "kept if the file exists";
            EXPECT_FALSE(probe_write_access(document));
            ::umask(before);
            EXPECT_EQ(fs::status(document).permissions(),
                      fs::perms{shared ? 0660U : 0666U & ~mask});
            fs::remove(key);
            fs::remove(document);
        }
    }
}

TEST_F(PosixFileTest, TheMachinesSetting) {
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"", std::nullopt},
        {"Path=/no/line/end", "/no/line/end"},
        {"# Path=/no\n\nother=1\nPath=/first\nPath=/second\n", "/first"},
        {"Path=/from/dos\r\nx\r\n", "/from/dos"},
        {"Path= /a b=c# \n", " /a b=c# "},
        {"Path=\n", ""},
        {" Path=/a\npath=/b\nPath =/c\n", std::nullopt},
    };
    EXPECT_EQ(machine_setting_source(), "/etc/orvane-systems/certificates.conf");
    testing::set_machine_setting(name_);
    for (const auto& [text, path] : cases) {
        support::write_file(name_, text);
        EXPECT_EQ(*machine_root_directory(), path) << text;
    }
    for (const std::string& name : {missing_, name_ + "/below"}) {
        testing::set_machine_setting(name);
        EXPECT_EQ(*machine_root_directory(), std::nullopt) << name;
    }
    testing::set_machine_setting(directory_.str());
    EXPECT_EQ(machine_root_directory().error(), SystemError::posix(EISDIR));
    testing::set_machine_setting("");
}

TEST(PosixProgramTest, SignalsTakeEffectAfterTheyWereHeld) {
    for (const int number : {SIGINT, SIGALRM}) {
        EXPECT_EXIT(
            {
                std::signal(number, SIG_DFL); // a shell may have it ignored
                {
                    const SignalsHeld held;
                    ::raise(number);
                    std::fputs("held", stderr);
                }
                ::_exit(0);
            },
            ::testing::KilledBySignal(number), "held");
    }
}

} // namespace
} // namespace platform
