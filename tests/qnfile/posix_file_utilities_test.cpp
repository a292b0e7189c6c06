#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "qnfile/directory.h"
#include "qnfile/file_stream.h"
#include "qnfile/file_utilities.h"
#include "tests/qnfile/file_fixture.h"
#include "tests/support/child_process.h"
#include "tests/support/environment_guard.h"

// File names as Linux has them, and what becomes of a file's permissions, times and links.
namespace qnfile {
namespace {

struct stat status_of(const std::string& path) {
    struct stat status = {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status;
}

class PosixFileUtilitiesTest : public FileFixture {
  protected:
    std::string target_ = path("target");
};

TEST(PosixFileNames, GoToUrisAndBack) {
    for (const std::string name :
         {"/", "//", "//host/share/x", "/C:/Dir", "/c|/x", "/a b/#1", "/what?/x", "/100%/%41",
          "/back\\slash", "/\xFF\xFE/\xC3\xA9", "/a/../b/./", "/localhost/x", "/\\\\?\\x",
          "/a:b@c;d=e,f", "/\x01\n\x7F", "relative/x", "x:y", "a ?b"}) {
        SCOPED_TRACE(name);
        const auto uri = uri_from_filename(name);
        EXPECT_EQ(uri.flags(), 0U) << uri.text();
        EXPECT_EQ(uri.has_scheme(), name.front() == '/') << uri.text();
        const auto again = filename_from_uri(uri_of(uri.text()), nullptr);
        EXPECT_EQ(again, name.front() == '/' ? name : get_current_directory(nullptr) + "/" + name);
    }
}

TEST(PosixFileNames, OfUrisAndReferences) {
    const std::pair<const char*, const char*> cases[] = {
        // null: refused
        {"file:///etc/x", "/etc/x"},
        {"file:/etc/x", "/etc/x"},
        {"file://LocalHost/etc/x", "/etc/x"},
        {"file:///C:/x", "/c:/x"}, // the URI layer knows drives on every system
        {"file:///%43%3A/x", "/C:/x"},
        {"file:///a%20b%2Fc%zz", nullptr},
        {"file:///a%20b%2Fc", "/a b/c"},
        {"file:x", "x"},
        {"../../../../../../../../../../../../../../../../../../../../x",
         nullptr}, // above the root
        {"file:///", "/"},
        {"file://", nullptr},
        {"file://host/x", nullptr},
        {"//host/x", nullptr},
        {"//localhost/etc/x", "/etc/x"},
        {"///etc/x", "/etc/x"},
        {"/etc/x", "/etc/x"}, // a reference from the root, as a path is
        {"/", "/"},
    };
    for (const auto& [uri, expected] : cases) {
        ErrorInfoPtr error;
        const std::string name = filename_from_uri(uri_of(uri), &error);
        EXPECT_EQ(error != nullptr, expected == nullptr) << uri;
        EXPECT_EQ(name, expected != nullptr ? expected : "") << uri;
    }
}

TEST(PosixPlaces, TheTemporaryDirectoryIsThatOfTheEnvironment) {
    const support::EnvironmentGuard guard("TMPDIR", "/a\\b");
    EXPECT_EQ(get_temp_directory(), "/a\\b/");
}

TEST_F(PosixFileUtilitiesTest, ACopyKeepsPermissionsAndTimes) {
    const std::int64_t accessed = 1'000'000'000'000'000'001;
    const std::int64_t modified = 2'000'000'000'999'999'999;
    for (const mode_t mode : {0640U, 0444U, 04755U}) {
        support::write_file(file_, "x");
        ::chmod(file_.c_str(), mode);
        set_file_timestamp(file_, &accessed, &modified, nullptr);
        copy_file(file_, target_, true, nullptr);
        const struct stat copy = status_of(target_);
        EXPECT_EQ(copy.st_mode & 07777U, mode & 0777U);
        EXPECT_EQ(copy.st_atim.tv_nsec, 1);
        EXPECT_EQ(copy.st_mtim.tv_nsec, 999'999'999);
        fs::remove(target_);
        fs::remove(file_);
    }
}

TEST_F(PosixFileUtilitiesTest, ACopyIsNeverMoreReadableThanItsSource) {
    support::write_file(file_, "secret");
    ::chmod(file_.c_str(), 0600);
    support::write_file(target_, "old");
    ::chmod(target_.c_str(), 0666);
    const std::string other_name = path("other name");
    fs::create_hard_link(target_, other_name); // keeps what a copy leaves that breaks off
    platform::testing::fail_next(Call::copy, platform::SystemError::posix(EIO));
    EXPECT_NE(code_of([&] { copy_file(file_, target_, false, nullptr); }), "");
    EXPECT_EQ(support::read_file(other_name), "secret");
    EXPECT_EQ(status_of(other_name).st_mode & 0777U, 0600U);
}

TEST_F(PosixFileUtilitiesTest, ACopyIsOfRegularFilesThatNobodyElseClaims) {
    support::write_file(file_, "content");
    support::write_file(target_, "old");
    const std::string hard = path("hard");
    const std::string soft = path("soft");
    const std::string pipe = path("pipe");
    fs::create_hard_link(file_, hard);
    fs::create_symlink(file_, soft);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto writer = FileWriteStream::create(target_, open_existing, share_read, flag_none);
    const struct {
        std::string source;
        std::string target;
        int error;
    } cases[] = {
        {file_, file_, EBUSY},        {file_, hard, EBUSY},    {soft, file_, EBUSY},
        {pipe, target_, EINVAL},      {file_, pipe, ENXIO},    {directory_.str(), target_, EISDIR},
        {file_, "/dev/null", EINVAL}, {file_, target_, EBUSY},
    };
    for (const auto& c : cases) {
        const auto info = error_of([&] { copy_file(c.source, c.target, false, nullptr); });
        EXPECT_EQ(*info->nested()->params().find("number"), std::to_string(c.error))
            << c.source << " to " << c.target;
    }
    EXPECT_EQ(support::read_file(file_), "content");
    EXPECT_EQ(support::read_file(target_), "old");
    copy_file("/proc/self/status", soft, false, nullptr);
    EXPECT_TRUE(fs::is_symlink(soft)) << "the copy goes where the link leads";
    EXPECT_NE(support::read_file(file_).find("test_qnfile"), std::string::npos)
        << "a file that tells no size";
}

CHILD_PROCESS(copy_into_a_full_place) {
    const rlimit limit = {100'000, 100'000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    std::signal(SIGXFSZ, SIG_IGN);
    ErrorInfoPtr error;
    copy_file(arguments[0], arguments[1], false, &error);
    return error ? std::stoi(*error->nested()->params().find("number")) : 0;
}

TEST_F(PosixFileUtilitiesTest, ACopyThatFailsLeavesNoTarget) {
    support::write_file(file_, std::string(300'000, 'x'));
    const std::string link = path("link");
    fs::create_symlink(target_, link);
    for (const bool exists : {false, true}) {
        for (const std::string& to : {target_, link}) {
            if (exists) {
                support::write_file(target_, "old");
            }
            support::ChildProcess child("copy_into_a_full_place", {file_, to});
            EXPECT_EQ(child.wait(), EFBIG);
            EXPECT_FALSE(fs::exists(target_));
        }
    }
    for (const bool exists : {false, true}) { // refused after the open of the target
        if (exists) {
            support::write_file(target_, "old");
        }
        platform::testing::fail_call(2, platform::SystemError::posix(EIO));
        EXPECT_NE(code_of([&] { copy_file(file_, target_, false, nullptr); }), "");
        EXPECT_EQ(fs::exists(target_), exists) << "only a target of its own is removed";
    }
}

TEST_F(PosixFileUtilitiesTest, TimesBeyondNanosecondsWrapAround) {
    support::write_file(file_, "x");
    const timespec in_2400[] = {{13569465600L, 7}, {13569465600L, 7}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file_.c_str(), in_2400, 0), 0);
    const struct stat status = status_of(file_); // what the file system could keep of it
    EXPECT_EQ(DirectoryEntry::create_from_full_path(file_).modified(),
              static_cast<std::int64_t>(static_cast<std::uint64_t>(status.st_mtim.tv_sec) *
                                            1'000'000'000U +
                                        static_cast<std::uint64_t>(status.st_mtim.tv_nsec)));
}

TEST_F(PosixFileUtilitiesTest, FlagsReachTheOpen) {
    for (const FileOpenFlags flags :
         {flag_none, flag_sequential_scan | flag_random_access | flag_overlapped,
          flag_write_through, flag_sequential_scan | flag_write_through}) {
        const auto stream = FileWriteStream::create(file_, create_always, share_none, flags);
        const int status = ::fcntl(static_cast<int>(stream->handle()), F_GETFL);
        EXPECT_EQ((status & O_DSYNC) != 0, (flags & flag_write_through) != 0) << flags;
    }
}

TEST_F(PosixFileUtilitiesTest, LinksResolveToWhatTheyLeadTo) {
    const std::string odd = path("\\\\?\\ %?#");
    support::write_file(odd, "x");
    fs::create_symlink(odd, target_);
    const std::string resolved = resolve_link(target_, nullptr);
    EXPECT_EQ(resolved, fs::canonical(odd).string());
    EXPECT_EQ(filename_from_uri(resolve_link(uri_from_filename(target_), nullptr), nullptr),
              resolved);
    EXPECT_NE(code_of([&] { delete_file(target_ + "/", nullptr); }), "");
    platform::testing::fail_next(Call::path_of_file, platform::SystemError::posix(EIO));
    EXPECT_EQ(code_of([&] { resolve_link(target_, nullptr); }), "error.qncore.errno");
    support::write_file(odd, "");
    EXPECT_TRUE(resolve_link(uri_from_filename(target_), nullptr).is_undefined());
    delete_file(target_, nullptr);
    EXPECT_TRUE(fs::exists(odd)) << "only the link is deleted";
}

TEST_F(PosixFileUtilitiesTest, ResolvedPathsHaveALimit) {
    const std::string base = fs::canonical(directory_.path()).string();
    for (const std::size_t length : {std::size_t{259}, std::size_t{260}, std::size_t{300}}) {
        std::string path = base;
        while (path.size() + 1 < length) {
            path += "/" + std::string(std::min<std::size_t>(length - path.size() - 1, 100), 'x');
        }
        ASSERT_EQ(path.size(), length);
        fs::create_directories(fs::path(path).parent_path());
        support::write_file(path, "x");
        if (length < 260) {
            EXPECT_EQ(resolve_link(path, nullptr), path);
        } else {
            support::check_failures({{[&](auto* e) { EXPECT_EQ(resolve_link(path, e), ""); },
                                      "error.qnfile.filename.uri|qnfile::resolve_link|Path '" +
                                          path + "' too long: " + std::to_string(length + 1),
                                      "errno 36"}});
        }
        fs::remove_all(fs::path(base) / std::string(100, 'x'));
    }
}

} // namespace
} // namespace qnfile
