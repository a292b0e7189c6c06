#include "qnfile/directory_entry.h"

#include <chrono>

#include "qnfile/directory_sequence_impl.h"
#include "tests/qnfile/file_fixture.h"

namespace qnfile {
namespace {

class DirectoryEntryTest : public FileFixture {};

TEST_F(DirectoryEntryTest, FromAPath) {
    make({"dir/", "dir/file"});
    const std::tuple<std::string, const char*, std::string> cases[] = {
        {path("dir"), "dir", base_},
        {path("dir") + "/", "dir", base_},
        {path("dir/file"), "file", base_ + "dir/"},
        {path("dir") + "//file", "file", base_ + "dir//"},
        {path("dir/."), ".", base_ + "dir/"},
        {"dir", "dir", "./"},
        {"dir/", "dir", "./"},
    };
    const auto previous = fs::current_path();
    fs::current_path(directory_.path());
    for (const auto& [path, name, directory] : cases) {
        const DirectoryEntry entry = DirectoryEntry::create_from_full_path(path);
        EXPECT_EQ(entry.name(), name) << path;
        EXPECT_EQ(entry.directory(), directory) << path;
        EXPECT_EQ(entry.full_path(), directory + name);
        EXPECT_EQ(entry.is_directory(), entry.name() != "file");
    }
    fs::current_path(previous);
    for (const std::string& path : {std::string(), path("dir//"), path("dir/file/")}) {
        ErrorInfoPtr error;
        // Only one separator at the end is removed, for the answer as for the system.
        const bool found{DirectoryEntry::create_from_full_path(path, &error)};
        EXPECT_EQ(found, !path.empty()) << path;
        EXPECT_EQ(static_cast<bool>(error), path.empty()) << path;
    }
}

TEST_F(DirectoryEntryTest, TellsWhatTheSystemTells) {
    constexpr std::chrono::seconds slack(2);
    const auto before = std::chrono::system_clock::now() - slack;
    make({"dir/", "file", "closed"});
    support::write_file(path("file"), std::string(70000, 'x'));
    fs::permissions(path("closed"), fs::perms::owner_read);
    const DirectorySequence entries = sequence("dir|file|closed");
    int count = 0;
    for (const DirectoryEntry& entry : entries) {
        SCOPED_TRACE(entry.name());
        ++count;
        const bool is_directory = entry.name() == "dir";
        EXPECT_EQ(entry.type(), is_directory ? entry_directory : entry_file);
        EXPECT_EQ(entry.access(), entry.name() == "closed"
                                      ? entry_access_read
                                      : entry_access_read | entry_access_write);
        if (!is_directory) {
            EXPECT_EQ(entry.size(), entry.name() == "file" ? 70000U : 1U);
        }
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
    EXPECT_EQ(count, 3);
    fs::permissions(path("closed"), fs::perms::owner_all);
}

TEST_F(DirectoryEntryTest, HasAnOrderAndAHash) {
    make({"a/", "a/b", "a/bb", "a/\xC3\xA4", "a-/", "a-/b"});
    const auto entry = [&](const char* name) {
        return DirectoryEntry::create_from_full_path(path(name));
    };
    const DirectoryEntry ordered[] = {entry("a"), entry("a-/b"), entry("a/b"), entry("a/bb"),
                                      entry("a/\xC3\xA4")};
    for (const DirectoryEntry& left : ordered) {
        for (const DirectoryEntry& right : ordered) {
            EXPECT_EQ(left < right, &left < &right) << left.full_path() << right.full_path();
            EXPECT_EQ(left == right, &left == &right);
        }
    }
    EXPECT_EQ(DirectoryEntry(), DirectoryEntry());
    EXPECT_FALSE(DirectoryEntry() == ordered[0]);
    EXPECT_LT(DirectoryEntry(), ordered[0]);
    EXPECT_EQ(impl::hash_of("a/"), 532U);
    EXPECT_EQ(impl::hash_of("\xC3\xA4"), static_cast<std::uint32_t>(5 * -61 - 92));
    EXPECT_EQ(ordered[4].hash_value(), impl::hash_of("\xC3\xA4") ^ impl::hash_of(base_ + "a/"));
}

TEST_F(DirectoryEntryTest, WalksOnAmongItsSiblings) {
    make({"dir/", "dir/1", "dir/2", "dir/3"});
    const Names all = rest(sequence("", nullptr, "dir").begin());
    const DirectorySequence::iterator place(DirectoryEntry::create_from_full_path(path("dir/2")));
    const auto from = std::find(all.begin(), all.end(), "dir/2");
    EXPECT_EQ(rest(place), Names(from, all.end()));
}

} // namespace
} // namespace qnfile
