#include <thread>

#include "qnfile/directory.h"
#include "qnfile/file_utilities.h"
#include "tests/qnfile/file_fixture.h"
#include "tests/support/child_process.h"

// File names, times and links as Windows has them.
namespace qnfile {
namespace {

class WindowsFiles : public FileFixture {};

TEST(WindowsFileNames, OfUris) {
    const std::pair<const char*, const char*> cases[] = {
        {"file:///C:/dir/a%20b.txt", "c:\\dir\\a b.txt"},
        {"file://server/share/x", "\\\\server\\share\\x"},
        {"file://server", "\\\\server"},
        {"file:///", "\\"},
        {"file:///C:", "\\C:"},      // nothing after the drive: required
        {"file:///%31:/x", "1:\\x"}, // the byte before the colon may be anything: required
        {"file:sub/x", "sub\\x"},
    };
    for (const auto& [uri, name] : cases) {
        EXPECT_EQ(filename_from_uri(uri_of(uri), nullptr), name) << uri;
    }
}

TEST_F(WindowsFiles, ResolvedPathsHaveALimit) {
    make({"file"});
    platform::testing::fail_next(Call::path_of_file, platform::SystemError::windows(8));
    const auto error = error_of([&] { resolve_link(file_, nullptr); });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->text(), "Path '" + file_ + "' too long: 260");
}

TEST_F(WindowsFiles, TheLargestTimeIsMoreThanItsNanoseconds) {
    make({"file"});
    constexpr std::int64_t last_tick = INT64_MAX / 100 * 100;
    std::int64_t modified = 0;
    for (const std::int64_t time : {last_tick, std::int64_t{INT64_MAX}}) {
        set_file_timestamp(file_, nullptr, &time, nullptr);
        get_file_timestamp(file_, nullptr, &modified, nullptr);
        EXPECT_EQ(modified == last_tick, time == last_tick) << modified;
    }
}

// Wine shows a link of the host as a reparse point without data, at which the removal stops.
TEST_F(WindowsFiles, ARemovalKeepsWhatALinkLeadsTo) {
    make({"outside/", "outside/kept", "tree/"});
    fs::current_path(directory_.path());
    support::run(support::is_wine()
                     ? support::Command{"Z:\\bin\\ln", {"-s", "../outside", "tree/link"}}
                     : support::Command{"cmd", {"/c", "mklink", "/J", "tree\\link", "outside"}});
    DirectoryEntry link;
    for (int i = 0; i < 1000 && !link; ++i) { // Wine does not wait for a program of the host
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ErrorInfoPtr missing;
        link = DirectoryEntry::create_from_full_path(path("tree/link"), &missing);
    }
    ASSERT_TRUE(link && link.is_link());
    const auto error = error_of([&] { remove_directory(path("tree"), remove_recursive, nullptr); });
    EXPECT_EQ(static_cast<bool>(error), support::is_wine());
    EXPECT_EQ(fs::exists(path("tree")), support::is_wine());
    EXPECT_TRUE(fs::exists(path("outside/kept")));
    if (support::is_wine()) {
        support::run({"Z:\\bin\\rm", {"tree/link"}});
    }
}

} // namespace
} // namespace qnfile
