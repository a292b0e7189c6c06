#include <algorithm>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/testing/testing.h"
#include "qncore/error_exception.h"
#include "tests/qnfile/directory_fixture.h"

namespace qnfile {
namespace {

namespace fs = std::filesystem;

class PosixDirectorySequenceTest : public DirectoryFixture {
  protected:
    std::uint32_t type_of(const char* name) const {
        return DirectoryEntry::create_from_full_path(path(name)).type();
    }
};

std::ptrdiff_t open_descriptors() {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
}

TEST_F(PosixDirectorySequenceTest, NamesAreBytes) {
    make({"\xFF\xFEname", "back\\slash", "sub\\x/", "sub\\x/\xC3(", "\xC3\xA4"});
    EXPECT_EQ(walk("\xFF*"), Names{"\xFF\xFEname"});
    EXPECT_EQ(walk("back\\slash"), Names{"back\\slash"});
    EXPECT_EQ(walk("sub\\x/?("), Names{}) << "no whole character";
    EXPECT_EQ(walk("sub\\x/*("), Names{"sub\\x/\xC3("});
    EXPECT_EQ(walk("?"), Names{"\xC3\xA4"});
    for (const char* pattern : {"\xFF*", "sub*/\xC3*"}) {
        const std::string name = (*sequence(pattern).begin()).full_path();
        EXPECT_EQ(support::read_file(name), "x");
        EXPECT_TRUE(fs::remove(name));
        EXPECT_FALSE(sequence(pattern));
    }
}

TEST_F(PosixDirectorySequenceTest, LinksAreNotFollowedForWhatTheyAre) {
    make({"dir/", "dir/long name", "file"});
    fs::create_symlink("dir", path("to dir"));
    fs::create_symlink("file", path("to file"));
    fs::create_symlink("nowhere", path("to nothing"));
    const std::pair<const char*, std::uint32_t> cases[] = {
        {"dir", entry_directory},
        {"file", entry_file},
        {"to dir", entry_link | entry_directory},
        {"to file", entry_link | entry_file},
        {"to nothing", entry_link | entry_file},
    };
    for (const auto& [name, type] : cases) {
        EXPECT_EQ(type_of(name), type) << name;
    }
    for (const DirectoryEntry& entry : sequence("**/*")) {
        const DirectoryEntry again = DirectoryEntry::create_from_full_path(entry.full_path());
        EXPECT_EQ(std::tuple(entry.type(), entry.access()),
                  std::tuple(again.type(), again.access()))
            << entry.full_path();
        struct stat status = {};
        ASSERT_EQ(::lstat(entry.full_path().c_str(), &status), 0);
        EXPECT_EQ(entry.size(), static_cast<std::uint64_t>(status.st_size));
        EXPECT_EQ(entry.modified(), status.st_mtim.tv_sec * 1'000'000'000 + status.st_mtim.tv_nsec);
    }
    EXPECT_EQ(walk("**/long*"), (Names{"dir/long name", "to dir/long name"}));
}

TEST_F(PosixDirectorySequenceTest, AWalkEndsInSpiteOfLinksThatLeadBack) {
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

TEST_F(PosixDirectorySequenceTest, ALinkThatLeadsNowhereIsAFileButAFailureIsReported) {
    fs::create_symlink("nowhere", path("missing"));
    fs::create_symlink("loop", path("loop"));
    fs::create_symlink(std::string(300, 'x'), path("long"));
    EXPECT_EQ(walk("**"), (Names{"long", "loop", "missing"}));
    qncore::ErrorInfoPtr error;
    platform::testing::fail_next(platform::Call::follow_link, platform::SystemError::posix(EIO));
    rest(sequence("**", &error).begin(&error), &error);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->code().path(), "error.qnfile.directory.iterator");
    platform::testing::fail_next(platform::Call::follow_link, platform::SystemError::posix(EIO));
    EXPECT_FALSE(DirectoryEntry::create_from_full_path(path("loop"), &error));
}

TEST_F(PosixDirectorySequenceTest, WhatBeganWithADotIsHidden) {
    make({".hidden", "..more", "shown"});
    for (const DirectoryEntry& entry : sequence("")) {
        EXPECT_EQ(entry.is_hidden(), entry.name() == ".hidden" || entry.name() == "..more")
            << entry.name();
    }
}

TEST_F(PosixDirectorySequenceTest, TimesReachBehind1970AndInto2400) {
    make({"old", "new"});
    for (const auto& [name, seconds] : {std::pair{"old", -86400L}, {"new", 13569465600L}}) {
        const timespec times[] = {{seconds, 7}, {seconds, 999'999'999}};
        ASSERT_EQ(::utimensat(AT_FDCWD, path(name).c_str(), times, 0), 0);
        struct stat status = {}; // what the file system could keep of it
        ASSERT_EQ(::stat(path(name).c_str(), &status), 0);
        const DirectoryEntry entry = DirectoryEntry::create_from_full_path(path(name));
        const auto expected = static_cast<std::uint64_t>(status.st_mtim.tv_sec) * 1'000'000'000U +
                              static_cast<std::uint64_t>(status.st_mtim.tv_nsec);
        EXPECT_EQ(entry.modified(), static_cast<std::int64_t>(expected)) << "wraps";
    }
}

TEST_F(PosixDirectorySequenceTest, ADeepOrBrokenOffWalkGivesItsHandlesBack) {
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
            EXPECT_EQ((*entry).type(), entry_directory);
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
    EXPECT_EQ(open_descriptors(), before);
}

TEST_F(PosixDirectorySequenceTest, ADirectoryRemovedMeanwhileHasNoMoreEntries) {
    make({"gone/"});
    const DirectorySequence entries = sequence("", nullptr, "gone");
    auto place = entries.begin();
    fs::remove(path("gone"));
    EXPECT_THAT(rest(place), testing::UnorderedElementsAre("gone/.", "gone/.."));
}

TEST_F(PosixDirectorySequenceTest, WhatBecomesALinkBehindTheListingIsNotEntered) {
    make({"a/", "a/x", "b/", "b/x", "outside/", "outside/x"});
    const DirectorySequence entries = sequence("a|b/x");
    auto place = entries.begin();
    const std::string other = (*place).directory() == base_ + "a/" ? "b" : "a";
    fs::remove_all(path(other));
    fs::create_directory_symlink("outside", path(other));
    qncore::ErrorInfoPtr error;
    place.increment(&error);
    EXPECT_EQ(place, entries.end());
    ASSERT_TRUE(error);
    EXPECT_EQ(error->nested()->code().path(), "error.qncore.errno");
}

} // namespace
} // namespace qnfile
