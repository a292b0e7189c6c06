#include <chrono>
#include <iterator>

#include "platform/path.h"
#include "qnfile/directory.h"
#include "qnfile/directory_sequence_impl.h"
#include "tests/qnfile/file_fixture.h"

namespace qnfile {
namespace {

using testing::ElementsAre;

static_assert(std::forward_iterator<DirectorySequence::iterator>);

class DirectorySequenceTest : public FileFixture {};
class DirectoryEntryTest : public FileFixture {};
class DirectoryTest : public FileFixture {};

TEST_F(DirectorySequenceTest, PatternsChooseWhatIsEnteredAndDelivered) {
    make({"a/", "a/b/", "a/b/x", "a/x", "b", "c/", "c/a/", "c/a/b", "c/b/", "..foo/", "..foo/x",
          ".hid/", ".hid/x", "x/", "x/x/", "x/x/x", "empty/"});
    const std::pair<const char*, Names> cases[] = {
        {"", {"..foo", ".hid", "a", "b", "c", "empty", "x"}},
        {"b", {"b"}},
        {"a/b", {"a/b"}},
        {"?/b", {"./b", "a/b", "c/b"}}, // "." is a directory like others
        {"a|c/b|x", {"a/b", "a/x", "c/b"}},
        {"b/*", {}}, // a file is not entered
        {"**/x", {".hid/x", "a/b/x", "a/x", "x", "x/x", "x/x/x"}},
        {"**/none", {}},
        {"**/a/b", {"a/b", "c/a/b"}},
        {"a/**", {"a/b", "a/b/x", "a/x"}},
        {"a/**/x", {"a/b/x", "a/x"}},
        {"**/x/**/x", {"x/x", "x/x/x", "x/x/x"}}, // reached in two ways
        // A name that begins with ".." is delivered, and not entered by a walk of any depth.
        {"**",
         {"..foo", ".hid", ".hid/x", "a", "a/b", "a/b/x", "a/x", "b", "c", "c/a", "c/a/b", "c/b",
          "empty", "x", "x/x", "x/x/x"}},
        {"..foo/x", {"..foo/x"}},
    };
    for (const auto& [pattern, entries] : cases) {
        EXPECT_EQ(walk(pattern), entries) << pattern;
    }
    EXPECT_THAT(rest(sequence("", nullptr, "empty").begin()),
                testing::UnorderedElementsAre("empty/.", "empty/.."));
    EXPECT_FALSE(sequence("none"));
}

TEST_F(DirectorySequenceTest, PathsAndForms) {
    make({"sub/", "sub/File"});
    fs::current_path(directory_.path() / "sub");
    const DirectorySequence here("", 0, "file", 4, false);
    ASSERT_NE(here.begin(), here.end());
    EXPECT_EQ(here.begin()->full_path(), "./File");

    const std::string unended = path("sub");
    DirectorySequence entries;
    EXPECT_EQ(entries.begin(), entries.end());
    entries.rewind();
    EXPECT_FALSE(entries);
    entries.assign(unended.data(), unended.size());
    EXPECT_EQ(entries.begin()->directory(), base_ + "sub/");
    entries.assign(unended.data(), unended.size(), "F*", 2, true);
    EXPECT_THAT(rest(entries.begin()), ElementsAre("sub/File"));
    fs::remove(path("sub/File"));
    make({"sub/Fresh"});
    entries.rewind();
    EXPECT_THAT(rest(entries.begin()), ElementsAre("sub/Fresh"));
}

TEST_F(DirectorySequenceTest, CopiesContinueOnTheirOwn) {
    make({"a/", "a/a/", "a/a/x", "a/b/", "a/b/x", "a/x", "b/", "b/x", "c/", "c/d/", "c/d/x", "x"});
    for (const char* pattern : {"", "**", "**/x", "?/*", "a/**", "**/a/*", "c/*/x", "**/x|?"}) {
        SCOPED_TRACE(pattern);
        const DirectorySequence entries = sequence(pattern);
        const Names all = rest(entries.begin());
        EXPECT_EQ(rest(entries.begin()), all) << "a second walk";
        auto place = entries.begin();
        auto beside = entries.begin();
        for (auto left = all.begin(); left != all.end(); ++left, ++place, ++beside) {
            EXPECT_EQ(place, beside) << "two walks at once";
            const Names expected(left, all.end());
            auto copy = place;
            const DirectoryEntry entry = *copy;
            EXPECT_EQ(rest(place), expected) << "the first to move takes the handle along";
            EXPECT_EQ(copy, place);
            EXPECT_EQ(rest(std::move(copy)), expected) << "the other finds its place again";
            EXPECT_EQ(relative(entry), *left) << "an entry stays as it is";
        }
        EXPECT_EQ(place, entries.end());
        EXPECT_EQ(beside, entries.end());
    }
}

constexpr auto device_error = platform::SystemError::posix(5);

TEST_F(DirectorySequenceTest, AWalkContinuesAfterWhatFails) {
    make({"a/", "a/x", "b/", "b/x", "c/", "c/x"});
    const std::pair<Call, std::size_t> cases[] = {
        {Call::open_directory, 2}, {Call::read_directory, 3}, {Call::close_directory, 3}};
    for (const auto& [call, entries] : cases) {
        SCOPED_TRACE(static_cast<int>(call));
        ErrorInfoPtr error;
        auto place = sequence("a|b|c/x").begin();
        platform::testing::fail_next(call, device_error);
        EXPECT_EQ(rest(place, &error).size(), entries);
        EXPECT_TRUE(error);

        place = sequence("a|b|c/x").begin();
        const DirectoryEntry held = *place; // so that the step is that of a copy
        platform::testing::fail_next(call, device_error);
        EXPECT_NE(code_of([&] { ++place; }), "");
        EXPECT_EQ(*place, held) << "a throw leaves the entry";
        EXPECT_EQ(place->size(), 1U);
        EXPECT_EQ(rest(place).size(), entries) << "goes on after the failure";
        EXPECT_EQ(rest(DirectorySequence::iterator(held)).size(), 3U) << "a copy tries again";
    }
}

TEST_F(DirectorySequenceTest, TheWayToTheFirstMatchHas100Levels) {
    std::string chain;
    for (int level = 1; level <= 101; ++level) {
        chain += "d/";
    }
    const std::string above = chain.substr(2);
    make({above, above + "leaf"});
    EXPECT_EQ(walk("**/leaf"), Names{above + "leaf"});
    make({chain});
    fs::rename(path(above + "leaf"), path(chain + "leaf"));
    EXPECT_EQ(walk("**/leaf"), Names{});
    // Where each level has a match, each is a new way.
    EXPECT_EQ(walk("**/d").size(), 101U);
}

TEST_F(DirectoryEntryTest, FromAPath) {
    make({"dir/", "dir/file"});
    fs::current_path(directory_.path());
    const std::tuple<std::string, const char*, std::string> cases[] = {
        {path("dir"), "dir", base_},
        {path("dir") + "/", "dir", base_},
        {path("dir/file"), "file", base_ + "dir/"},
        {path("dir") + "//file", "file", base_ + "dir//"},
        {path("dir/."), ".", base_ + "dir/"},
        {"dir", "dir", "./"},
    };
    for (const auto& [path, name, directory] : cases) {
        const DirectoryEntry entry = DirectoryEntry::create_from_full_path(path);
        EXPECT_EQ(entry.name(), name) << path;
        EXPECT_EQ(entry.directory(), directory) << path;
        EXPECT_EQ(entry.full_path(), directory + name);
        EXPECT_EQ(entry.is_directory(), entry.name() != "file");
    }
    // Only one separator at the end is removed, for the answer as for the system.
    EXPECT_TRUE(DirectoryEntry::create_from_full_path(path("dir//")));
    EXPECT_NE(code_of([] { DirectoryEntry::create_from_full_path(""); }), "");
}

TEST_F(DirectoryEntryTest, HasTheSystemsStatistics) {
    constexpr std::chrono::seconds slack(2);
    const auto before = std::chrono::system_clock::now() - slack;
    make({"closed"});
    support::write_file(file_, std::string(70000, 'x'));
    fs::permissions(path("closed"), fs::perms::owner_read);
    int count = 0;
    for (const DirectoryEntry& entry : sequence("file|closed")) {
        SCOPED_TRACE(entry.name());
        ++count;
        const bool is_closed = entry.name() == "closed";
        EXPECT_EQ(entry.type(), entry_file);
        EXPECT_EQ(entry.access(),
                  is_closed ? entry_access_read : entry_access_read | entry_access_write);
        EXPECT_EQ(entry.size(), is_closed ? 1U : 70000U);
        for (const std::int64_t time : {entry.accessed(), entry.modified(), entry.created()}) {
            const std::chrono::system_clock::time_point point{std::chrono::nanoseconds(time)};
            EXPECT_TRUE(point >= before && point <= before + 10 * slack) << time;
        }
        const DirectoryEntry again = DirectoryEntry::create_from_full_path(entry.full_path());
        EXPECT_EQ(again, entry);
        EXPECT_EQ(again.hash_value(), entry.hash_value());
        EXPECT_EQ(std::tuple(again.type(), again.access(), again.modified(), again.created()),
                  std::tuple(entry.type(), entry.access(), entry.modified(), entry.created()));
    }
    EXPECT_EQ(count, 2);
}

TEST_F(DirectoryEntryTest, HasAnOrderAndAHash) {
    make({"a/", "a/b", "a/bb", "a/\xC3\xA4", "a-/", "a-/b"});
    const auto entry = [&](const char* name) {
        return DirectoryEntry::create_from_full_path(path(name));
    };
    const DirectoryEntry ordered[] = {DirectoryEntry(), entry("a"),    entry("a-/b"),
                                      entry("a/b"),     entry("a/bb"), entry("a/\xC3\xA4")};
    for (const DirectoryEntry& left : ordered) {
        for (const DirectoryEntry& right : ordered) {
            EXPECT_EQ(left < right, &left < &right) << &left - ordered << &right - ordered;
            EXPECT_EQ(left == right, &left == &right);
        }
    }
    EXPECT_EQ(DirectoryEntry(), DirectoryEntry());
    EXPECT_EQ(impl::hash_of("a/"), 532U);
    EXPECT_EQ(impl::hash_of("\xC3\xA4"), static_cast<std::uint32_t>(5 * -61 - 92));
    EXPECT_EQ(ordered[5].hash_value(), impl::hash_of("\xC3\xA4") ^ impl::hash_of(base_ + "a/"));
}

TEST_F(DirectoryEntryTest, WalksOnAmongItsSiblings) {
    make({"dir/", "dir/1", "dir/2", "dir/3"});
    const Names all = rest(sequence("", nullptr, "dir").begin());
    const DirectorySequence::iterator place(DirectoryEntry::create_from_full_path(path("dir/2")));
    EXPECT_EQ(rest(place), Names(std::find(all.begin(), all.end(), "dir/2"), all.end()));
}

constexpr int mode = 7;

TEST_F(DirectoryTest, CreatesWhatIsMissingAbove) {
    for (const char* name : {"a", "a/b/c/", "a/b/c/d//e"}) {
        create_directory(path(name), mode, nullptr, true);
        EXPECT_EQ(code_of([&] { create_directory(path(name), mode, nullptr, true); }),
                  "error.qnfile.directory.alreadyExists");
    }
    EXPECT_TRUE(fs::is_directory(directory_.path() / "a/b/c/d/e"));
}

TEST_F(DirectoryTest, TreesHaveADepth) {
    const auto nested = [&](int levels) {
        std::string path = this->path("deep");
        for (int level = 1; level < levels; ++level) {
            path += "/d";
        }
        return path;
    };
    ErrorInfoPtr error;
    create_directory(nested(53), mode, &error, true);
    ASSERT_TRUE(error);
    EXPECT_FALSE(fs::exists(nested(1))) << "nothing was made";
    create_directory(nested(52), mode, nullptr, true);
    create_directory(nested(54), mode, nullptr, true);

    error.reset();
    remove_directory(nested(2), remove_recursive, &error); // with 52 below it
    ASSERT_TRUE(error);
    EXPECT_TRUE(fs::exists(nested(54))) << "nothing was removed";
    support::write_file(nested(54) + "/file", "x");
    remove_directory(nested(3), remove_recursive, nullptr); // with 51
    EXPECT_FALSE(fs::exists(nested(3)));
}

TEST_F(DirectoryTest, RemovesATree) {
    make({"tree/a/b/", "tree/a/b/file", "tree/a/.c/", "tree/a/.c/file", "tree/..d/",
          "tree/..d/file", "tree/.hidden"});
    ErrorInfoPtr error;
    remove_directory(path("tree"), remove_empty_only, &error);
    EXPECT_TRUE(error);
    remove_directory(path("tree"), remove_recursive, &error);
    EXPECT_TRUE(fs::exists(path("tree"))) << "a slot that holds an error stops it at once";
    remove_directory(path("tree") + "/", remove_recursive, nullptr);
    EXPECT_FALSE(fs::exists(path("tree")));
}

TEST_F(DirectoryTest, CurrentDirectory) {
    // Longer than the first buffer.
    const fs::path inner = directory_.path() / std::string(100, 'x') / std::string(100, 'y');
    fs::create_directories(inner);
    set_current_directory(inner.parent_path().string(), nullptr);
    set_current_directory(inner.filename().string(), nullptr);
    const std::string current = get_current_directory(nullptr);
    EXPECT_EQ(fs::path(current), fs::canonical(inner));
    EXPECT_NE(current.back(), platform::preferred_separator);
    create_directory("here", mode, nullptr, true); // a name without a separator
    EXPECT_TRUE(fs::exists(inner / "here"));
}

} // namespace
} // namespace qnfile
