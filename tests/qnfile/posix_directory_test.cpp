#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/testing/testing.h"
#include "qnfile/directory.h"
#include "qnfile/directory_sequence.h"
#include "qnfile/file_stream.h"
#include "qnfile/file_utilities.h"
#include "qnfile/read_stream_view.h"
#include "tests/qnfile/expected_failure.h"
#include "tests/support/temporary_directory.h"

// Symbolic links, and failures that only this system gives.
namespace qnfile {
namespace {

namespace fs = std::filesystem;
using qncore::ErrorInfoPtr;

class PosixDirectoryTest : public ::testing::Test {
  protected:
    PosixDirectoryTest() {
        fs::create_directories(tree_ / "sub");
        fs::create_directories(outside_ / "inner");
        for (const fs::path& place : {tree_ / "sub", outside_, outside_ / "inner"}) {
            support::write_file((place / "file").string(), "kept");
        }
    }
    ~PosixDirectoryTest() override { platform::testing::before_removal({}); }

    bool is_outside_whole() const {
        return fs::exists(outside_ / "file") && fs::exists(outside_ / "inner/file");
    }
    void remove(const fs::path& path, int flags = remove_recursive) {
        error_.reset();
        remove_directory(path.string(), static_cast<DirectoryRemoveFlags>(flags), &error_);
    }

    support::TemporaryDirectory directory_;
    fs::path tree_ = directory_.path() / "tree";
    fs::path outside_ = directory_.path() / "outside";
    ErrorInfoPtr error_;
};

TEST_F(PosixDirectoryTest, LinksAreRemovedNotFollowed) {
    const char* places[] = {"tree/link", "tree/sub/link", "link"};
    for (const char* place : places) {
        fs::create_directory_symlink(outside_, directory_.path() / place);
        fs::create_symlink("nowhere", directory_.path() / (std::string(place) + ".dangling"));
        fs::create_symlink(outside_ / "file", directory_.path() / (std::string(place) + ".file"));
    }
    for (const char* path : {"tree", "link", "linked/"}) {
        fs::create_directory_symlink(outside_, directory_.path() / "linked");
        remove(directory_.path() / path);
        EXPECT_FALSE(error_) << error_->chain_text();
        EXPECT_TRUE(is_outside_whole()) << path;
        EXPECT_FALSE(fs::exists(fs::symlink_status(directory_.file(path)))) << path;
        fs::remove(directory_.path() / "linked");
    }
}

TEST_F(PosixDirectoryTest, LinksAreFollowedOnDemand) {
    fs::create_directory_symlink(outside_, tree_ / "link");
    remove(tree_, remove_recursive | remove_follow_links);
    EXPECT_FALSE(error_);
    EXPECT_FALSE(fs::exists(tree_));
    EXPECT_TRUE(fs::is_empty(outside_)) << "its content goes, the directory itself does not";
}

TEST_F(PosixDirectoryTest, AnEntryExchangedForALinkLeadsNowhere) {
    // At the moment when this path is about to be opened or removed, "sub" (or the tree itself)
    // becomes a link to the outside, where the same names are.
    struct Case {
        const char* moment;
        const char* exchanged;
        bool fails;
    };
    const Case cases[] = {
        {"tree", "tree", false},
        {"tree/sub", "tree/sub", false},
        {"tree/sub/file", "tree/sub", false},
        {"tree/sub/inner", "tree/sub", false},
        {"tree/sub/inner/file", "tree/sub", false},
        {"tree/sub/inner/file", "tree/sub/inner", false},
        {"tree/sub/file", "tree", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.exchanged << " before " << c.moment);
        fs::remove_all(tree_);
        fs::create_directories(tree_ / "sub/inner");
        support::write_file((tree_ / "sub/file").string(), "x");
        support::write_file((tree_ / "sub/inner/file").string(), "x");
        const fs::path exchanged = directory_.path() / c.exchanged;
        const fs::path aside = directory_.path() / "aside";
        bool done = false;
        platform::testing::before_removal([&](const std::string& path) {
            if (!done && path == directory_.file(c.moment)) {
                done = true;
                fs::rename(exchanged, aside);
                fs::create_directory_symlink(outside_, exchanged);
            }
        });
        remove(tree_);
        platform::testing::before_removal({});
        EXPECT_TRUE(done);
        EXPECT_TRUE(is_outside_whole());
        EXPECT_EQ(error_ != nullptr, c.fails) << (error_ ? error_->chain_text() : "");
        fs::remove_all(aside);
    }
}

TEST_F(PosixDirectoryTest, FailuresOfThisSystemAlone) {
    const std::string link = (tree_ / "link").string();
    const std::string gone = directory_.file("gone");
    const fs::path before = fs::current_path();
    fs::create_directory(gone);
    set_current_directory(gone, nullptr);
    remove(gone);
    check_failures({
        {[](auto* e) { get_current_directory(e); },
         "error.qnfile.directory|qnfile::get_current_directory()|"
         "Failed to get current working directory. bufSize=260"},
    });
    fs::current_path(before);
    fs::create_directory_symlink(outside_, link);
    impl::remove_win32_reparse_point(link + "/", nullptr);
    EXPECT_FALSE(fs::exists(fs::symlink_status(link)));
    EXPECT_TRUE(is_outside_whole());
}

TEST_F(PosixDirectoryTest, CausesAreTheSystems) {
    const std::string missing = directory_.file("missing");
    const std::string file = (outside_ / "file").string();
    const auto view = FileReadStreamView::create(file, share_read_write, flag_none);
    fs::resize_file(file, 0);
    char byte = 0;
    const auto tree = [&](int flags, int depth_left) {
        impl::remove_directory_tree(tree_.string(), static_cast<DirectoryRemoveFlags>(flags),
                                    depth_left, nullptr);
    };
    const struct {
        std::function<void()> action;
        const char* cause;
    } cases[] = {
        {[&] { DirectorySequence(missing.data(), missing.size()); }, "errno 2"},
        {[&] { DirectoryEntry::create_from_full_path(missing); }, "errno 2"},
        {[&] { create_directory(outside_.string(), 0, nullptr, true); }, "errno 17"},
        {[&] { create_directory(file + "/x/y", 0, nullptr, true); }, "errno 20"},
        {[&] { impl::create_directory_recursive(missing + "/x", 0, nullptr, -1); }, "errno 7"},
        {[&] { tree(remove_recursive, -1); }, "errno 7"},
        {[&] { tree(remove_empty_only, 0); }, "errno 39"},
        {[&] { remove_directory(file, nullptr); }, "errno 20"},
        {[&] { set_current_directory(missing, nullptr); }, "errno 2"},
        {[&] { delete_file(missing, nullptr); }, "errno 2"},
        {[&] { query_file_size(missing, nullptr); }, "errno 2"},
        {[&] { view->read(&byte, 1); }, "errno 61"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(cause_of(c.action), c.cause);
    }
}

TEST_F(PosixDirectoryTest, NamesOfAnyBytesGoByTheirPermissions) {
    const std::string name = directory_.file("\xFF\\ a%?");
    const mode_t before = ::umask(027);
    create_directory(name, 0, nullptr, false);
    ::umask(before);
    struct stat status = {};
    ASSERT_EQ(::stat(name.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0750U);
    EXPECT_TRUE(is_accessible_directory(name, access_check_write, nullptr));
    fs::create_directory(directory_.path() / ".hidden");
    for (const char* hidden : {".hidden", ".hidden/"}) {
        EXPECT_TRUE(is_accessible_directory(directory_.file(hidden), access_check_hidden, nullptr));
    }
    remove(name);
    EXPECT_FALSE(fs::exists(name));
}

} // namespace
} // namespace qnfile
