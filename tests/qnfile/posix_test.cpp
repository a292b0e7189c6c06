#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "qnfile/directory.h"
#include "qnfile/file_stream.h"
#include "qnfile/file_utilities.h"
#include "tests/qnfile/file_fixture.h"
#include "tests/support/environment_guard.h"

// Names, links, permissions and handles as Linux has them.
namespace qnfile {
namespace {

class PosixDirectoryTest : public FileFixture {};

std::ptrdiff_t open_descriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

TEST_F(PosixDirectoryTest, NamesAreBytes) {
    make({"\xFF\xFEname/", "sub\\x/", "sub\\x/\xC3(", "\xC3\xA4"});
    EXPECT_EQ(walk("sub\\x/?("), Names{}) << "no whole character";
    EXPECT_EQ(walk("sub\\x/*("), Names{"sub\\x/\xC3("});
    EXPECT_EQ(walk("?"), Names{"\xC3\xA4"});
    const std::string name = sequence("\xFF*").begin()->full_path();
    EXPECT_TRUE(is_accessible_directory(name, access_check_write, nullptr));
    remove_directory(name, remove_recursive, nullptr);
    EXPECT_FALSE(sequence("\xFF*"));
}

TEST_F(PosixDirectoryTest, ADirectoryHasTheModeOfTheMaskAndMayBeHidden) {
    const mode_t before = ::umask(027);
    create_directory(path(".hidden"), 0, nullptr, false);
    ::umask(before);
    EXPECT_EQ(fs::status(path(".hidden")).permissions(), fs::perms{0750});
    for (const char* hidden : {".hidden", ".hidden/"}) {
        EXPECT_TRUE(is_accessible_directory(path(hidden), access_check_hidden, nullptr));
    }
}

TEST_F(PosixDirectoryTest, AnEntryIsTheLinkItself) {
    make({"dir/", "dir/long name", "file", ".hidden", "..more"});
    fs::create_symlink("dir", path("to dir"));
    fs::create_symlink("file", path("to file"));
    fs::create_symlink("nowhere", path("to nothing"));
    const std::tuple<const char*, DirectoryEntryType, bool> cases[] = {
        // name, type, whether it is hidden
        {"..", entry_directory, false},
        {".hidden", entry_file, true},
        {"..more", entry_file, true},
        {"to dir", entry_link | entry_directory, false},
        {"to file", entry_link | entry_file, false},
        {"to nothing", entry_link | entry_file, false},
    };
    for (const auto& [name, type, is_hidden] : cases) {
        for (const DirectoryEntry& entry :
             {*sequence(name).begin(), DirectoryEntry::create_from_full_path(path(name))}) {
            EXPECT_EQ(entry.type(), type) << name;
            EXPECT_EQ(entry.is_link(), std::string_view(name).starts_with("to")) << name;
            EXPECT_EQ(entry.is_hidden(), is_hidden) << name;
        }
    }
    EXPECT_EQ(sequence("to nothing").begin()->size(), 7U);
    EXPECT_EQ(walk("**/long*"), (Names{"dir/long name", "to dir/long name"}));
}

TEST_F(PosixDirectoryTest, AWalkEndsInSpiteOfLinksThatLeadBack) {
    make({"a/", "a/b/", "a/b/x"});
    fs::create_directory_symlink("..", path("a/b/up"));
    fs::create_directory_symlink(".", path("a/here"));
    fs::create_directory_symlink("b", path("a/beside"));
    EXPECT_EQ(walk("**"), (Names{"a", "a/b", "a/b/up", "a/b/x", "a/beside", "a/beside/up",
                                 "a/beside/x", "a/here"}));
    EXPECT_EQ(walk("a/here/b/x"), Names{}) << "a link back counts as empty";
    const Names expected = {"a/b/x", "a/beside/x"};
    EXPECT_EQ(walk("**/x"), expected);
    const DirectorySequence entries = sequence("**/x");
    std::size_t steps = 0;
    for (auto place = entries.begin(); place != entries.end() && steps < 10; ++steps) {
        const auto copy = place++; // each step from a copy that lost its place
        rest(copy);
    }
    EXPECT_EQ(steps, expected.size());
    EXPECT_THAT(rest(entries.begin()), testing::UnorderedElementsAreArray(expected)) << "again";
}

TEST_F(PosixDirectoryTest, ALinkThatLeadsNowhereIsAFileButAFailureIsReported) {
    fs::create_symlink("nowhere", path("missing"));
    fs::create_symlink("loop", path("loop"));
    fs::create_symlink(std::string(300, 'x'), path("long"));
    EXPECT_EQ(walk("**"), (Names{"long", "loop", "missing"}));
    ErrorInfoPtr error;
    platform::testing::fail_next(Call::follow_link, platform::SystemError::posix(EIO));
    rest(sequence("**", &error).begin(&error), &error);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code().path(), "error.qnfile.directory.iterator");
    platform::testing::fail_next(Call::follow_link, platform::SystemError::posix(EIO));
    EXPECT_FALSE(DirectoryEntry::create_from_full_path(path("loop"), &error));
}

TEST_F(PosixDirectoryTest, ADeepOrInterruptedWalkClosesItsHandles) {
    // Deeper than one path could name.
    const std::string name(200, 'n');
    const auto before = open_descriptors();
    fs::current_path(directory_.path());
    for (int level = 0; level < 30; ++level) {
        fs::create_directory(name);
        fs::current_path(name);
    }
    {
        const DirectorySequence entries = sequence("**/n*");
        EXPECT_EQ(std::distance(entries.begin(), entries.end()), 30);
        EXPECT_EQ(open_descriptors(), before);
        const auto interrupted = std::next(entries.begin(), 25);
        EXPECT_TRUE(interrupted->is_directory());
        EXPECT_GE(open_descriptors(), before + 25);
    }
    auto failed = sequence("*").begin();
    platform::testing::fail_next(Call::read_directory, platform::SystemError::posix(EIO));
    EXPECT_NE(code_of([&] { ++failed; }), "");
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(PosixDirectoryTest, WhatBecomesALinkAfterTheListingIsNotEntered) {
    make({"a/", "a/x", "b/", "b/x", "outside/", "outside/x"});
    const DirectorySequence entries = sequence("a|b/x");
    auto place = entries.begin();
    const std::string other = place->directory() == base_ + "a/" ? "b" : "a";
    fs::remove_all(path(other));
    fs::create_directory_symlink("outside", path(other));
    ErrorInfoPtr error;
    place.increment(&error);
    EXPECT_EQ(place, entries.end());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->nested()->code().path(), "error.qncore.errno");
}

/// A tree, and the same names outside of it, where nothing may be removed.
class PosixRemovalTest : public FileFixture {
  protected:
    PosixRemovalTest() {
        make({"tree/sub/inner/", "tree/sub/file", "tree/sub/inner/file", "outside/inner/",
              "outside/file", "outside/inner/file"});
    }
    ~PosixRemovalTest() override { platform::testing::before_removal({}); }

    bool is_outside_whole() const {
        return fs::exists(path("outside/file")) && fs::exists(path("outside/inner/file"));
    }
    bool exists(const std::string& name) const {
        return fs::exists(fs::symlink_status(path(name)));
    }
    /// Returns whether it fails.
    bool remove(const std::string& name, DirectoryRemoveFlags flags = remove_recursive) const {
        return !code_of([&] { remove_directory(path(name), flags, nullptr); }).empty();
    }
};

TEST_F(PosixRemovalTest, LinksAreRemovedAndFollowedOnlyOnDemand) {
    for (const std::string place : {"tree/link", "tree/sub/link", "link", "linked"}) {
        fs::create_directory_symlink(path("outside"), path(place));
        fs::create_symlink("nowhere", path(place + ".dangling"));
        fs::create_symlink(path("outside/file"), path(place + ".file"));
    }
    impl::remove_win32_reparse_point(path("tree/link/"), nullptr);
    EXPECT_FALSE(exists("tree/link"));
    for (const char* name : {"tree", "link", "linked/"}) {
        EXPECT_FALSE(remove(name)) << name;
        EXPECT_TRUE(is_outside_whole()) << name;
        EXPECT_FALSE(exists(name));
    }
    make({"tree/"});
    fs::create_directory_symlink(path("outside"), path("tree/link"));
    EXPECT_FALSE(remove("tree", remove_recursive | remove_follow_links));
    EXPECT_FALSE(exists("tree"));
    EXPECT_TRUE(fs::is_empty(path("outside"))) << "its content goes, the directory itself does not";
}

TEST_F(PosixRemovalTest, AnEntryExchangedForALinkLeadsNowhere) {
    // At the moment when this path is about to be opened or removed, "sub" (or the tree itself)
    // becomes a link to the outside, where the same names are.
    const std::tuple<const char*, const char*, bool> cases[] = {
        // moment, what is exchanged, whether the removal fails
        {"tree", "tree", false},
        {"tree/sub", "tree/sub", false},
        {"tree/sub/file", "tree/sub", false},
        {"tree/sub/inner", "tree/sub", false},
        {"tree/sub/inner/file", "tree/sub", false},
        {"tree/sub/inner/file", "tree/sub/inner", false},
        {"tree/sub/file", "tree", true},
    };
    for (const auto& [moment, exchanged, fails] : cases) {
        SCOPED_TRACE(::testing::Message() << exchanged << " before " << moment);
        fs::remove_all(path("tree"));
        fs::remove_all(path("aside"));
        make({"tree/sub/inner/", "tree/sub/file", "tree/sub/inner/file"});
        bool done = false;
        platform::testing::before_removal(
            [&, at = path(moment), from = path(exchanged)](const std::string& next) {
                if (!done && next == at) {
                    done = true;
                    fs::rename(from, path("aside"));
                    fs::create_directory_symlink(path("outside"), from);
                }
            });
        EXPECT_EQ(remove("tree"), fails);
        EXPECT_TRUE(done);
        EXPECT_TRUE(is_outside_whole());
    }
}

TEST(PosixFileNames, GoToUrisAndBack) {
    for (const std::string name :
         {"/", "//", "//host/share/x", "/C:/Dir", "/c|/x", "/a b/#1", "/what?/x", "/100%/%41",
          "/back\\slash", "/\xFF\xFE/\xC3\xA9", "/a/../b/./", "/localhost/x", "/\\\\?\\x",
          "/a:b@c;d=e,f", "/\x01\n\x7F", "relative/x", "x:y", "a ?b"}) {
        const bool is_absolute = name.front() == '/';
        const auto uri = uri_from_filename(name);
        EXPECT_EQ(uri.flags(), 0U) << uri.text();
        EXPECT_EQ(uri.has_scheme(), is_absolute) << uri.text();
        EXPECT_EQ(filename_from_uri(uri_of(uri.text()), nullptr),
                  (is_absolute ? "" : get_current_directory(nullptr) + "/") + name);
    }
}

TEST(PosixFileNames, OfUrisAndReferences) {
    const std::pair<const char*, const char*> cases[] = {
        // null: refused
        {"file:///etc/x", "/etc/x"},
        {"file://LocalHost/etc/x", "/etc/x"},
        {"file:///C:/x", "/c:/x"}, // the URI layer knows drives on every system
        {"file:///%43%3A/x", "/C:/x"},
        {"file:///a%20b%2Fc", "/a b/c"},
        {"file:x", "x"},
        {"file:///", "/"},
        {"file://", nullptr},
        {"file://host/x", nullptr},
        {"//localhost/etc/x", "/etc/x"},
        {"///etc/x", "/etc/x"},
        {"/etc/x", "/etc/x"}, // a reference from the root, as a path is
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

class PosixFileUtilitiesTest : public FileFixture {
  protected:
    PosixFileUtilitiesTest() { support::write_file(file_, "content"); }

    std::string target_ = path("target");
};

TEST_F(PosixFileUtilitiesTest, ACopyKeepsPermissionsAndTimes) {
    const std::int64_t accessed = 1'000'000'000'000'000'001;
    const std::int64_t modified = 2'000'000'000'999'999'999;
    for (const mode_t mode : {0640U, 0444U, 04755U}) {
        fs::remove(target_);
        ::chmod(file_.c_str(), mode);
        set_file_timestamp(file_, &accessed, &modified, nullptr);
        copy_file(file_, target_, true, nullptr);
        EXPECT_EQ(fs::status(target_).permissions(), fs::perms{mode & 0777U});
        const auto copy = DirectoryEntry::create_from_full_path(target_);
        EXPECT_EQ(std::pair(copy.accessed(), copy.modified()), std::pair(accessed, modified));
    }
}

TEST_F(PosixFileUtilitiesTest, ACopyIsNeverMoreReadableThanItsSource) {
    fs::permissions(file_, fs::perms{0600});
    support::write_file(target_, "old");
    fs::permissions(target_, fs::perms{0666});
    fs::create_hard_link(target_, missing_); // keeps what a copy leaves that fails half-way
    platform::testing::fail_next(Call::copy, platform::SystemError::posix(EIO));
    EXPECT_NE(code_of([&] { copy_file(file_, target_, false, nullptr); }), "");
    EXPECT_EQ(support::read_file(missing_), "content");
    EXPECT_EQ(fs::status(missing_).permissions(), fs::perms{0600});
}

/// The error number of a copy; 0 if it succeeds.
int copy_error(const std::string& source, const std::string& target) {
    ErrorInfoPtr error;
    copy_file(source, target, false, &error);
    return error ? std::stoi(*error->nested()->params().find("number")) : 0;
}

TEST_F(PosixFileUtilitiesTest, ACopyIsOfRegularFilesThatNobodyElseClaims) {
    const std::string hard = path("hard");
    const std::string soft = path("soft");
    const std::string pipe = path("pipe");
    fs::create_hard_link(file_, hard);
    fs::create_symlink(file_, soft);
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto writer = FileWriteStream::create(target_, create_new, share_read, flag_none);
    const std::tuple<std::string, std::string, int> cases[] = {
        {file_, file_, EBUSY},        {file_, hard, EBUSY},    {soft, file_, EBUSY},
        {pipe, target_, EINVAL},      {file_, pipe, ENXIO},    {directory_.str(), target_, EISDIR},
        {file_, "/dev/null", EINVAL}, {file_, target_, EBUSY},
    };
    for (const auto& [source, target, error] : cases) {
        EXPECT_EQ(copy_error(source, target), error) << source << " to " << target;
    }
    EXPECT_EQ(support::read_file(file_), "content");
    EXPECT_EQ(copy_error("/proc/self/status", soft), 0);
    EXPECT_TRUE(fs::is_symlink(soft)) << "the copy goes where the link leads";
    EXPECT_NE(support::read_file(file_).find("test_qnfile"), std::string::npos)
        << "a file that reports no size";
}

TEST_F(PosixFileUtilitiesTest, ACopyThatFailsLeavesNoTarget) {
    const rlimit limit = {100'000, 100'000};
    fs::resize_file(file_, 300'000);
    fs::create_symlink(target_, path("link"));
    for (const bool exists : {false, true}) {
        const auto prepare = [&] {
            fs::remove(target_);
            if (exists) {
                support::write_file(target_, "old");
            }
        };
        for (const std::string& to : {target_, path("link")}) {
            prepare();
            EXPECT_EXIT(
                {
                    ::setrlimit(RLIMIT_FSIZE, &limit);
                    std::signal(SIGXFSZ, SIG_IGN);
                    ::_exit(copy_error(file_, to));
                },
                ::testing::ExitedWithCode(EFBIG), "");
            EXPECT_FALSE(fs::exists(target_));
        }
        prepare();
        platform::testing::fail_call(2, platform::SystemError::posix(EIO)); // after the open
        EXPECT_EQ(copy_error(file_, target_), EIO);
        EXPECT_EQ(fs::exists(target_), exists) << "only a target of its own is removed";
    }
}

TEST_F(PosixFileUtilitiesTest, TimesBeyondNanosecondsWrapAround) {
    const timespec in_2400[] = {{13569465600L, 7}, {13569465600L, 7}};
    ASSERT_EQ(::utimensat(AT_FDCWD, file_.c_str(), in_2400, 0), 0);
    struct stat status = {};
    ASSERT_EQ(::stat(file_.c_str(), &status), 0); // what the file system could keep of it
    const auto seconds = static_cast<std::uint64_t>(status.st_mtim.tv_sec);
    EXPECT_EQ(static_cast<std::uint64_t>(DirectoryEntry::create_from_full_path(file_).modified()),
              seconds * 1'000'000'000U + static_cast<std::uint64_t>(status.st_mtim.tv_nsec));
}

TEST_F(PosixFileUtilitiesTest, FlagsReachTheOpen) {
    for (const FileOpenFlags flags :
         {flag_none, flag_sequential_scan | flag_random_access | flag_overlapped,
          flag_write_through}) {
        const auto stream = FileWriteStream::create(file_, create_always, share_none, flags);
        const int status = ::fcntl(static_cast<int>(stream->handle()), F_GETFL);
        EXPECT_EQ((status & O_DSYNC) != 0, (flags & flag_write_through) != 0) << flags;
    }
}

TEST_F(PosixFileUtilitiesTest, LinksResolveToWhatTheyLeadTo) {
    const std::string odd = path("\\\\?\\ %?#");
    fs::rename(file_, odd);
    fs::create_symlink(odd, target_);
    const qnuri::UriReference uri = uri_from_filename(target_);
    EXPECT_EQ(resolve_link(target_, nullptr), odd);
    EXPECT_EQ(filename_from_uri(resolve_link(uri, nullptr), nullptr), odd);
    platform::testing::fail_next(Call::path_of_file, platform::SystemError::posix(EIO));
    EXPECT_EQ(code_of([&] { resolve_link(target_, nullptr); }), "error.qncore.errno");
    support::write_file(odd, "");
    EXPECT_TRUE(resolve_link(uri, nullptr).is_undefined());
    delete_file(target_, nullptr);
    EXPECT_TRUE(fs::exists(odd)) << "only the link is deleted";
}

TEST_F(PosixFileUtilitiesTest, ResolvedPathsHaveALimit) {
    std::string longest = path(std::string(200, 'x'));
    fs::create_directory(longest);
    longest += "/" + std::string(258 - longest.size(), 'x');
    support::write_file(longest, "x");
    EXPECT_EQ(resolve_link(longest, nullptr), longest);
    fs::rename(longest, longest + "x");
    support::check_failures(
        {{[&](auto* e) { EXPECT_EQ(resolve_link(longest + "x", e), ""); },
          "error.qnfile.filename.uri|qnfile::resolve_link|Path '" + longest + "x' too long: 261",
          "errno 36"}});
}

} // namespace
} // namespace qnfile
