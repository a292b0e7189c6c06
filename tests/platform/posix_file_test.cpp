#include <fcntl.h>
#include <grp.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "platform/file_system.h"
#include "platform/key_file.h"
#include "tests/platform/openers.h"
#include "tests/support/account.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

constexpr gid_t some_group = 65533;

struct stat status_of(const std::string& name) {
    struct stat status = {};
    EXPECT_EQ(::stat(name.c_str(), &status), 0) << name;
    return status;
}

mode_t mode_of(const std::string& name) {
    return status_of(name).st_mode & 07777;
}

class MaskGuard {
  public:
    explicit MaskGuard(mode_t mask)
        : before_(::umask(mask)) {}
    MaskGuard(const MaskGuard&) = delete;
    MaskGuard& operator=(const MaskGuard&) = delete;
    ~MaskGuard() { ::umask(before_); }

  private:
    mode_t before_;
};

TEST(PosixFileTest, DescriptorsAreTheProcesssOwnAndWriteThrough) {
    const support::TemporaryDirectory directory;
    const OpenFile file(open_file(directory.file("f"), FileAccess::write,
                                  FileDisposition::create_new, FileSharing::none,
                                  {.sequential_scan = true, .write_through = true}));
    const int descriptor = static_cast<int>(file.get());
    EXPECT_EQ(::fcntl(descriptor, F_GETFD), FD_CLOEXEC);
    EXPECT_NE(::fcntl(descriptor, F_GETFL) & O_DSYNC, 0);
}

TEST(PosixFileTest, AStrangersLockCountsAsAnExclusiveOpener) {
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("f");
    support::write_file(name, "content");
    const int stranger = ::open(name.c_str(), O_RDWR | O_CLOEXEC);
    struct flock all = {};
    all.l_whence = SEEK_SET;
    for (const int kind : {LOCK_SH, LOCK_EX}) {
        ASSERT_EQ(::flock(stranger, kind), 0);
        const Opener reader{FileAccess::read, FileSharing::read_write};
        EXPECT_TRUE(reader.open(name).error().is_sharing_violation());
        ASSERT_EQ(::flock(stranger, LOCK_UN), 0);

        all.l_type = kind == LOCK_SH ? F_RDLCK : F_WRLCK;
        ASSERT_EQ(::fcntl(stranger, F_OFD_SETLK, &all), 0);
        for (const Opener& opener : all_openers()) {
            EXPECT_TRUE(opener.open(name).error().is_sharing_violation()) << opener.text();
        }
        all.l_type = F_UNLCK;
        ASSERT_EQ(::fcntl(stranger, F_OFD_SETLK, &all), 0);
    }
    ::close(stranger);
    for (const Opener& opener : all_openers()) {
        EXPECT_TRUE(opener.open(name)) << opener.text();
    }
}

TEST(PosixFileTest, WhereNothingCanBeLockedEveryOpenIsAllowed) {
    const Opener writer_alone{FileAccess::write, FileSharing::none};
    const OpenFile device = writer_alone.open("/proc/self/comm");
    EXPECT_TRUE(device) << describe(device.error());
}

TEST(PosixFileTest, KeyFilesHaveTheirModeWhateverTheMask) {
    for (const mode_t mask : {mode_t{0}, mode_t{077}, mode_t{0777}}) {
        SCOPED_TRACE(mask);
        const support::TemporaryDirectory directory;
        const std::string name = directory.file("key");
        const MaskGuard guard(mask);
        ASSERT_TRUE(OpenFile(open_key_file(name)));
        EXPECT_EQ(mode_of(name), 0600U);
        EXPECT_FALSE(set_key_file_writable(name, false));
        EXPECT_EQ(mode_of(name), 0400U);
        EXPECT_FALSE(set_key_file_writable(name, true));
        EXPECT_EQ(mode_of(name), 0600U);
    }
    EXPECT_TRUE(set_key_file_writable("/nonexistent/key", true).is_not_found());
}

TEST(PosixFileTest, KeyFilesAreReadByTheGroupOfASetGroupIdDirectory) {
    if (!support::may_change_account()) {
        GTEST_SKIP() << "only root can give a directory to any group";
    }
    const support::TemporaryDirectory directory;
    ASSERT_EQ(::chown(directory.str().c_str(), 0, some_group), 0);
    ASSERT_EQ(::chmod(directory.str().c_str(), 02770), 0);
    const std::string name = directory.file("key");
    const MaskGuard guard(077);
    ASSERT_TRUE(OpenFile(open_key_file(name)));
    EXPECT_EQ(mode_of(name), 0640U);
    EXPECT_EQ(status_of(name).st_gid, some_group);
    EXPECT_FALSE(set_key_file_writable(name, false));
    EXPECT_EQ(mode_of(name), 0440U);
    EXPECT_FALSE(set_key_file_writable(name, true));
    EXPECT_EQ(mode_of(name), 0640U);
}

TEST(PosixFileTest, AnExistingKeyFileKeepsItsOwnerAndMode) {
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("key");
    support::write_file(name, "key");
    ASSERT_EQ(::chmod(name.c_str(), 0604), 0);
    const struct stat before = status_of(name);
    EXPECT_TRUE(OpenFile(open_key_file(name)));
    const struct stat after = status_of(name);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(support::read_file(name), "key");
}

CHILD_PROCESS(open_key_file_as_nobody) {
    if (!support::become_nobody()) {
        return 1;
    }
    const OpenFile file(open_key_file(arguments.at(0)));
    support::say(file ? "opened" : describe(file.error()));
    return file.error().is_access_denied() ? 0 : 2;
}

TEST(PosixFileTest, WhoeverMayNotOpenAKeyFileCannotReplaceIt) {
    if (!support::may_change_account()) {
        GTEST_SKIP() << "only root can become another account";
    }
    const support::TemporaryDirectory directory;
    ASSERT_EQ(::chmod(directory.str().c_str(), 0777), 0);
    const std::string name = directory.file("key");
    support::write_file(name, "key");
    for (const mode_t mode : {mode_t{0600}, mode_t{0444}, mode_t{0222}}) {
        ASSERT_EQ(::chmod(name.c_str(), mode), 0);
        support::ChildProcess child("open_key_file_as_nobody", {name});
        EXPECT_EQ(child.wait(), 0) << std::oct << mode << ": " << child.next_line();
    }
    EXPECT_EQ(support::read_file(name), "key");
}

} // namespace
} // namespace platform
