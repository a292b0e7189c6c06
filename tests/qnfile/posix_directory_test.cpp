#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "qnfile/directory.h"
#include "tests/qnfile/file_fixture.h"

// Names, links and handles as Linux has them.
namespace qnfile {
namespace {

class PosixDirectoryTest : public FileFixture {};

std::ptrdiff_t open_descriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

TEST_F(PosixDirectoryTest, NamesAreBytes) {
    make({"\xFF\xFEname", "back\\slash", "sub\\x/", "sub\\x/\xC3(", "\xC3\xA4"});
    EXPECT_EQ(walk("\xFF*"), Names{"\xFF\xFEname"});
    EXPECT_EQ(walk("back\\slash"), Names{"back\\slash"});
    EXPECT_EQ(walk("sub\\x/?("), Names{}) << "no whole character";
    EXPECT_EQ(walk("sub\\x/*("), Names{"sub\\x/\xC3("});
    EXPECT_EQ(walk("?"), Names{"\xC3\xA4"});
    for (const char* pattern : {"\xFF*", "sub*/\xC3*"}) {
        const std::string name = sequence(pattern).begin()->full_path();
        EXPECT_EQ(support::read_file(name), "x");
        EXPECT_TRUE(fs::remove(name));
        EXPECT_FALSE(sequence(pattern));
    }
}

TEST_F(PosixDirectoryTest, AnEntryIsTheLinkItself) {
    make({"dir/", "dir/long name", "file", ".hidden", "..more"});
    fs::create_symlink("dir", path("to dir"));
    fs::create_symlink("file", path("to file"));
    fs::create_symlink("nowhere", path("to nothing"));
    const std::pair<const char*, DirectoryEntryType> cases[] = {
        {"dir", entry_directory},
        {"file", entry_file},
        {"to dir", entry_link | entry_directory},
        {"to file", entry_link | entry_file},
        {"to nothing", entry_link | entry_file},
    };
    for (const auto& [name, type] : cases) {
        EXPECT_EQ(DirectoryEntry::create_from_full_path(path(name)).type(), type) << name;
    }
    for (const DirectoryEntry& entry : sequence("**/*")) {
        const DirectoryEntry again = DirectoryEntry::create_from_full_path(entry.full_path());
        EXPECT_EQ(std::tuple(entry.type(), entry.access()),
                  std::tuple(again.type(), again.access()))
            << entry.full_path();
        struct stat status = {};
        ASSERT_EQ(::lstat(entry.full_path().c_str(), &status), 0);
        if (entry.name() != "..") { // other tests use the directory above
            EXPECT_EQ(entry.size(), static_cast<std::uint64_t>(status.st_size));
        }
        EXPECT_EQ(entry.is_hidden(), entry.name() == ".hidden" || entry.name() == "..more");
    }
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
    const DirectorySequence entries = sequence("**/x");
    for (int turn = 0; turn < 2; ++turn) {
        Names names = rest(entries.begin());
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, (Names{"a/b/x", "a/beside/x"})) << "also a second time";
    }
    std::size_t steps = 0;
    for (auto place = entries.begin(); place != entries.end() && steps < 10; ++steps) {
        const auto copy = place++; // each step from a copy that lost its place
        rest(copy);
    }
    EXPECT_EQ(steps, 2U);
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

TEST_F(PosixDirectoryTest, ADeepOrBrokenOffWalkGivesItsHandlesBack) {
    // Deeper than one path could name.
    const std::string name(200, 'n');
    const auto before = open_descriptors();
    int place = ::open(directory_.str().c_str(), O_DIRECTORY);
    for (int level = 0; level < 30; ++level) {
        ASSERT_EQ(::mkdirat(place, name.c_str(), 0777), 0);
        const int below = ::openat(place, name.c_str(), O_DIRECTORY);
        ::close(place);
        place = below;
    }
    ::close(place);
    {
        const DirectorySequence entries = sequence("**/n*");
        int count = 0;
        for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
            EXPECT_EQ(entry->type(), entry_directory);
            ++count;
        }
        EXPECT_EQ(count, 30);
        EXPECT_EQ(open_descriptors(), before);
        auto broken_off = entries.begin();
        for (int level = 0; level < 25; ++level) {
            ++broken_off;
        }
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
        fs::create_directories(tree_ / "sub");
        fs::create_directories(outside_ / "inner");
        for (const fs::path& place : {tree_ / "sub", outside_, outside_ / "inner"}) {
            support::write_file((place / "file").string(), "kept");
        }
    }
    ~PosixRemovalTest() override { platform::testing::before_removal({}); }

    bool is_outside_whole() const {
        return fs::exists(outside_ / "file") && fs::exists(outside_ / "inner/file");
    }
    void remove(const fs::path& path, DirectoryRemoveFlags flags = remove_recursive) {
        error_.reset();
        remove_directory(path.string(), flags, &error_);
    }

    fs::path tree_ = directory_.path() / "tree";
    fs::path outside_ = directory_.path() / "outside";
    ErrorInfoPtr error_;
};

TEST_F(PosixRemovalTest, LinksAreRemovedAndFollowedOnlyOnDemand) {
    for (const char* place : {"tree/link", "tree/sub/link", "link"}) {
        fs::create_directory_symlink(outside_, directory_.path() / place);
        fs::create_symlink("nowhere", directory_.path() / (std::string(place) + ".dangling"));
        fs::create_symlink(outside_ / "file", directory_.path() / (std::string(place) + ".file"));
    }
    impl::remove_win32_reparse_point(path("tree/link/"), nullptr);
    EXPECT_FALSE(fs::exists(fs::symlink_status(tree_ / "link")));
    for (const char* name : {"tree", "link", "linked/"}) {
        fs::create_directory_symlink(outside_, directory_.path() / "linked");
        remove(directory_.path() / name);
        EXPECT_FALSE(error_) << error_->chain_text();
        EXPECT_TRUE(is_outside_whole()) << name;
        EXPECT_FALSE(fs::exists(fs::symlink_status(path(name)))) << name;
        fs::remove(directory_.path() / "linked");
    }
    fs::create_directories(tree_);
    fs::create_directory_symlink(outside_, tree_ / "link");
    remove(tree_, remove_recursive | remove_follow_links);
    EXPECT_FALSE(error_ || fs::exists(tree_));
    EXPECT_TRUE(fs::is_empty(outside_)) << "its content goes, the directory itself does not";
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
    for (const auto& [moment, exchanged_name, fails] : cases) {
        SCOPED_TRACE(::testing::Message() << exchanged_name << " before " << moment);
        fs::remove_all(tree_);
        fs::create_directories(tree_ / "sub/inner");
        support::write_file((tree_ / "sub/file").string(), "x");
        support::write_file((tree_ / "sub/inner/file").string(), "x");
        const fs::path exchanged = directory_.path() / exchanged_name;
        const fs::path aside = directory_.path() / "aside";
        bool done = false;
        platform::testing::before_removal([&, at = path(moment)](const std::string& next) {
            if (!done && next == at) {
                done = true;
                fs::rename(exchanged, aside);
                fs::create_directory_symlink(outside_, exchanged);
            }
        });
        remove(tree_);
        platform::testing::before_removal({});
        EXPECT_TRUE(done);
        EXPECT_TRUE(is_outside_whole());
        EXPECT_EQ(error_ != nullptr, fails) << (error_ ? error_->chain_text() : "");
        fs::remove_all(aside);
    }
}

TEST_F(PosixRemovalTest, ARemovedCurrentDirectoryHasNoName) {
    const fs::path before = fs::current_path();
    fs::current_path(tree_);
    remove(tree_);
    EXPECT_EQ(code_of([] { get_current_directory(nullptr); }), "error.qnfile.directory");
    fs::current_path(before);
}

TEST_F(PosixRemovalTest, NamesOfAnyBytesGoByTheirPermissions) {
    const std::string name = path("\xFF\\ a%?");
    const mode_t before = ::umask(027);
    create_directory(name, 0, nullptr, false);
    ::umask(before);
    struct stat status = {};
    ASSERT_EQ(::stat(name.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0750U);
    EXPECT_TRUE(is_accessible_directory(name, access_check_write, nullptr));
    fs::create_directory(directory_.path() / ".hidden");
    for (const char* hidden : {".hidden", ".hidden/"}) {
        EXPECT_TRUE(is_accessible_directory(path(hidden), access_check_hidden, nullptr));
    }
    remove(name);
    EXPECT_FALSE(fs::exists(name));
}

} // namespace
} // namespace qnfile
