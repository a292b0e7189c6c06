#include <chrono>
#include <csignal>
#include <cstddef>
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

#include <gmock/gmock.h>

#include "platform/file_system.h"
#include "platform/key_file.h"
#include "platform/machine.h"
#include "platform/testing/testing.h"
#include "tests/platform/openers.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

constexpr gid_t some_group = 65533;
constexpr Opener reader{FileAccess::read, FileSharing::read_write};
constexpr Opener writer_alone{FileAccess::write, FileSharing::none};

struct stat status_of(const std::string& name) {
    struct stat status = {};
    EXPECT_EQ(::stat(name.c_str(), &status), 0) << name;
    return status;
}

mode_t mode_of(const std::string& name) {
    return status_of(name).st_mode & 07777;
}

TEST(PosixFileTest, AStrangersLockCountsAsAnExclusiveOpener) {
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("f");
    support::write_file(name, "content");
    const int stranger = ::open(name.c_str(), O_RDWR | O_CLOEXEC);
    struct flock all = {};
    all.l_whence = SEEK_SET;
    for (const short kind : {short{F_RDLCK}, short{F_WRLCK}}) {
        all.l_type = kind;
        ASSERT_EQ(::fcntl(stranger, F_OFD_SETLK, &all), 0);
        for (const Opener& opener : all_openers()) {
            EXPECT_TRUE(opener.open(name).error().is_sharing_violation()) << opener.text();
        }
        all.l_type = F_UNLCK;
        ASSERT_EQ(::fcntl(stranger, F_OFD_SETLK, &all), 0);
    }
    for (const Opener& opener : all_openers()) {
        EXPECT_TRUE(opener.open(name)) << opener.text();
    }
    ASSERT_EQ(::flock(stranger, LOCK_SH), 0);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(reader.open(name).error().is_sharing_violation());
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(500));
    ::close(stranger);
}

TEST(PosixFileTest, WhatIsEmptiedIsEmptyWhateverItHeldBefore) {
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("f");
    for (const auto disposition :
         {FileDisposition::create_always, FileDisposition::truncate_existing}) {
        support::write_file(name, "");
        const int stranger = ::open(name.c_str(), O_RDWR | O_CLOEXEC);
        ASSERT_EQ(::flock(stranger, LOCK_EX), 0);
        auto waiting = std::async(std::launch::async,
                                  [&] { return bool(writer_alone.open(name, disposition)); });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        ASSERT_EQ(::write(stranger, "content", 7), 7);
        ::close(stranger);
        EXPECT_TRUE(waiting.get());
        EXPECT_EQ(support::read_file(name), "");
    }
}

TEST(PosixFileTest, AClosedFileIsFreeThoughAForkedChildHasIt) {
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("f");
    const auto file =
        open_file(name, FileAccess::write, FileDisposition::create_new, FileSharing::none, {});
    const int inherited = ::dup(static_cast<int>(*file));
    close_file(*file);
    EXPECT_TRUE(writer_alone.open(name));
    ::close(inherited);
}

TEST(PosixFileTest, OnlyFilesAndCharacterDevicesAreOpened) {
    const support::TemporaryDirectory directory;
    const std::string pipe = directory.file("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0666), 0);
    for (const std::string& name : {pipe, directory.str()}) {
        for (const Opener& opener : all_openers()) {
            EXPECT_FALSE(opener.open(name)) << name << ' ' << opener.text();
            EXPECT_FALSE(opener.open(name, FileDisposition::create_always)) << name;
        }
        EXPECT_FALSE(OpenFile(open_key_file(name))) << name;
    }
    const auto open_device = [] {
        return OpenFile(open_file("/dev/null", FileAccess::write, FileDisposition::create_always,
                                  FileSharing::none, {.write_through = true}));
    };
    const OpenFile device = open_device();
    EXPECT_TRUE(open_device()) << "a device has no share modes";
    const int flags = ::fcntl(static_cast<int>(device.get()), F_GETFL);
    EXPECT_EQ(flags & (O_NONBLOCK | O_DSYNC), O_DSYNC);

    auto writing = std::async(std::launch::async, [&] { support::write_file(pipe, "secret"); });
    const OpenFile input(open_input(pipe));
    char text[6] = {};
    EXPECT_EQ(*read_file(input.get(), text, 6), 6U);
    writing.get();
}

TEST(PosixFileTest, AWriteGoesOnAfterAPart) {
    constexpr std::uint32_t largest = UINT32_MAX;
    void* memory =
        ::mmap(nullptr, largest, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    const OpenFile device = writer_alone.open("/dev/null");
    EXPECT_EQ(*write_file(device.get(), memory, largest), largest);
    ::munmap(memory, largest);

    const support::TemporaryDirectory directory;
    const OpenFile file = writer_alone.open(directory.file("f"), FileDisposition::create_new);
    rlimit before = {};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit four_bytes = {4, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &four_bytes), 0);
    EXPECT_EQ(*write_file(file.get(), "content", 7), 4U);
    EXPECT_EQ(write_file(file.get(), "ent", 3).error(), SystemError::posix(EFBIG));
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, handler);
}

/// Lets a system call fail from now on, where an argument of it has all these bits.
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

CHILD_PROCESS(open_with_failing_calls) {
    const auto number = [&](std::size_t i) {
        return static_cast<unsigned int>(std::stoul(arguments.at(i)));
    };
    ::umask(0777);
    if (!let_fail(number(1), number(2), number(3), number(4))) {
        return -2;
    }
    const OpenFile file(open_key_file(arguments.at(0)));
    return static_cast<int>(file.error().number());
}

TEST(PosixFileTest, FailuresOfLocksAndOfFilesWithoutAName) {
    const struct {
        const char* what;
        int call;
        int argument;
        int bits;
        int error;
        int result;
    } cases[] = {
        {"no locks at all", SYS_flock, 1, LOCK_EX, ENOLCK, 0},
        {"no locks of ranges", SYS_fcntl, 1, F_OFD_SETLK, ENOLCK, 0},
        {"the guard fails", SYS_flock, 1, LOCK_EX, EIO, EIO},
        {"a look fails", SYS_fcntl, 1, F_OFD_GETLK, EIO, EIO},
        {"a lock fails", SYS_fcntl, 1, F_OFD_SETLK, EIO, EIO},
        {"no files without a name", SYS_openat, 2, O_TMPFILE, EOPNOTSUPP, 0},
        {"no mode", SYS_fchmod, 1, 0, EIO, EIO},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const support::TemporaryDirectory directory;
        const std::string name = directory.file("key");
        support::ChildProcess child("open_with_failing_calls",
                                    {name, std::to_string(c.call), std::to_string(c.argument),
                                     std::to_string(c.bits), std::to_string(c.error)});
        EXPECT_EQ(child.wait(), c.result);
        if (c.result == 0) {
            EXPECT_EQ(mode_of(name), 0600U);
        } else {
            EXPECT_TRUE(std::filesystem::is_empty(directory.path())) << "nothing is left";
        }
    }
}

TEST(PosixFileTest, KeyFilesHaveTheirModeWhateverTheMask) {
    EXPECT_TRUE(set_key_file_writable("/nonexistent/key", true).is_not_found());
    for (const bool shared : {false, true}) {
        if (shared && !support::may_change_account()) {
            GTEST_SKIP() << "only root can give a directory to any group";
        }
        for (const mode_t mask : {mode_t{0}, mode_t{077}, mode_t{0777}}) {
            SCOPED_TRACE(std::to_string(mask) + (shared ? " shared" : ""));
            const support::TemporaryDirectory directory;
            const gid_t owner = shared ? some_group : ::getegid();
            ASSERT_EQ(::chown(directory.str().c_str(), ::geteuid(), owner), 0);
            ASSERT_EQ(::chmod(directory.str().c_str(), shared ? 02770 : 0700), 0);
            const std::string key = directory.file("key");
            const std::string document = directory.file("document");
            const mode_t group = shared ? 040 : 0;
            const mode_t before = ::umask(mask);
            ASSERT_TRUE(OpenFile(open_key_file(key)));
            EXPECT_EQ(mode_of(key), 0600U | group);
            EXPECT_FALSE(set_key_file_writable(key, false));
            EXPECT_EQ(mode_of(key), 0400U | group);
            EXPECT_FALSE(set_key_file_writable(key, true));
            EXPECT_EQ(mode_of(key), 0600U | group);
            ASSERT_EQ(::chmod(key.c_str(), 0604), 0);
            ASSERT_TRUE(OpenFile(open_key_file(key)));
            EXPECT_EQ(mode_of(key), 0604U) << "an existing file keeps its mode";
            EXPECT_FALSE(probe_write_access(document));
            ::umask(before);
            EXPECT_EQ(mode_of(document), shared ? 0660U : 0666U & ~mask);
            EXPECT_EQ(status_of(key).st_gid == some_group, shared);
            EXPECT_EQ(status_of(document).st_gid == some_group, shared);
        }
    }
}

TEST(PosixMachineTest, TheMachinesSetting) {
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"", std::nullopt},
        {"Path=/srv/certificates\n", "/srv/certificates"},
        {"Path=/no/line/end", "/no/line/end"},
        {"# Path=/no\n\nother=1\nPath=/first\nPath=/second\n", "/first"},
        {"Path=/from/dos\r\nx\r\n", "/from/dos"},
        {"Path= /a b=c# \n", " /a b=c# "},
        {"Path=\n", ""},
        {" Path=/a\npath=/b\nPath =/c\n", std::nullopt},
    };
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("certificates.conf");
    EXPECT_EQ(machine_setting_source(), "/etc/orvane-systems/certificates.conf");
    testing::set_machine_setting(name);
    EXPECT_EQ(machine_setting_source(), name);
    EXPECT_EQ(*machine_root_directory(), std::nullopt) << "no such file";
    for (const auto& [content, path] : cases) {
        support::write_file(name, content);
        EXPECT_EQ(*machine_root_directory(), path) << content;
    }
    testing::set_machine_setting(name + "/below");
    EXPECT_EQ(*machine_root_directory(), std::nullopt) << "no such directory";
    testing::set_machine_setting(directory.str());
    EXPECT_EQ(machine_root_directory().error(), SystemError::posix(EISDIR));
    ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0666), 0);
    testing::set_machine_setting(directory.file("pipe"));
    EXPECT_EQ(machine_root_directory().error(), SystemError::posix(EINVAL));
    testing::set_machine_setting("");
}

} // namespace
} // namespace platform
