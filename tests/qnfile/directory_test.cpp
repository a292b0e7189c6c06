#include "qnfile/directory.h"

#include <filesystem>

#include "platform/path.h"
#include "platform/testing/testing.h"
#include "tests/qnfile/expected_failure.h"
#include "tests/support/temporary_directory.h"

namespace qnfile {
namespace {

namespace fs = std::filesystem;
using platform::Call;
using qncore::ErrorInfoPtr;

constexpr int mode = 7;
constexpr auto recursive = remove_recursive;

class DirectoryTest : public ::testing::Test {
  protected:
    DirectoryTest() { support::write_file(file_, "x"); }

    /// The path of that many nested directories named "d".
    std::string nested(int levels) const {
        std::string path = directory_.file("deep");
        for (int level = 1; level < levels; ++level) {
            path += "/d";
        }
        return path;
    }

    /// A directory with no permission to write. Wine does not let a directory have that, but shows
    /// the bits of its host's.
    std::string read_only() const {
        const std::string path = directory_.file("read_only");
        fs::create_directory(path);
        fs::permissions(path, fs::perms::owner_read);
        const auto left = fs::status(path).permissions() & fs::perms::owner_write;
        return left == fs::perms::none ? path : "Z:\\proc";
    }

    support::TemporaryDirectory directory_;
    std::string file_ = directory_.file("file");
    std::string missing_ = directory_.file("missing");
};

TEST_F(DirectoryTest, CreatesWhatIsMissingAbove) {
    const struct {
        const char* path;
        bool recursive;
        const char* code; ///< empty when it succeeds
    } steps[] = {
        {"a", false, ""},
        {"a", true, "error.qnfile.directory.alreadyExists"},
        {"a/b/c", false, "error.qnfile.directory"},
        {"a/b/c/", true, ""},
        {"a/b/c/d//e", true, ""},
        {"file/x", true, "error.qnfile.directory"},
    };
    for (const auto& step : steps) {
        ErrorInfoPtr error;
        create_directory(directory_.file(step.path), mode, &error, step.recursive);
        EXPECT_EQ(error ? error->code().path() : "", step.code) << step.path;
    }
    EXPECT_TRUE(fs::is_directory(directory_.path() / "a/b/c/d/e"));
}

TEST_F(DirectoryTest, TreesHaveADepth) {
    ErrorInfoPtr error;
    create_directory(nested(53), mode, &error, true);
    ASSERT_TRUE(error);
    EXPECT_FALSE(fs::exists(nested(1))) << "nothing was made";
    create_directory(nested(52), mode, nullptr, true);
    create_directory(nested(54), mode, nullptr, true);

    error.reset();
    remove_directory(nested(2), recursive, &error); // with 52 below it
    ASSERT_TRUE(error);
    EXPECT_TRUE(fs::exists(nested(54))) << "nothing was removed";
    support::write_file(nested(54) + "/file", "x");
    remove_directory(nested(3), recursive, nullptr); // with 51
    EXPECT_FALSE(fs::exists(nested(3)));
}

TEST_F(DirectoryTest, RemovesATree) {
    const fs::path tree = directory_.path() / "tree";
    for (const char* inner : {"a/b", "a/.c", "..d"}) {
        fs::create_directories(tree / inner);
        support::write_file((tree / inner / "file").string(), "x");
    }
    support::write_file((tree / ".hidden").string(), "x");
    ErrorInfoPtr error;
    remove_directory(tree.string(), remove_empty_only, &error);
    EXPECT_TRUE(error);
    remove_directory(tree.string(), recursive, &error);
    EXPECT_TRUE(fs::exists(tree)) << "a slot that holds an error stops it at once";
    remove_directory(tree.string() + "/", recursive, nullptr);
    EXPECT_FALSE(fs::exists(tree));
    EXPECT_TRUE(fs::exists(file_));
}

TEST_F(DirectoryTest, CurrentDirectory) {
    const std::string before = get_current_directory(nullptr);
    // Longer than the first buffer.
    const fs::path inner = directory_.path() / std::string(100, 'x') / std::string(100, 'y');
    fs::create_directories(inner);
    set_current_directory(inner.parent_path().string(), nullptr);
    set_current_directory(inner.filename().string(), nullptr);
    const std::string current = get_current_directory(nullptr);
    create_directory("here", mode, nullptr, true); // a name without a separator
    set_current_directory(before, nullptr);
    EXPECT_EQ(fs::path(current), fs::canonical(inner));
    EXPECT_NE(current.back(), platform::preferred_separator);
    EXPECT_TRUE(fs::exists(inner / "here"));
}

TEST_F(DirectoryTest, AccessibleIsAQuestion) {
    EXPECT_TRUE(is_accessible_directory(directory_.str(), access_check_write, nullptr));
    EXPECT_TRUE(is_accessible_directory(read_only(), access_check_read, nullptr));
    EXPECT_FALSE(is_accessible_directory(missing_, {}, nullptr)) << "and never throws";
}

TEST_F(DirectoryTest, EveryFailureByItsCodePlaceMessageAndCause) {
    const std::string directory = directory_.str();
    const std::string deep = nested(54);
    const auto slashed = [](const std::string& path) { return fs::path(path).generic_string(); };
    const std::string no_such = directory_.file("no/such");
    const std::string read_only = this->read_only();
    const std::string odd =
        directory_.file(platform::paths_have_drives ? "a|b" : std::string(300, 'x'));
    fs::create_directories(deep);
    support::write_file(deep + "/file", "x");
    const auto fail_next = [](Call call) {
        platform::testing::fail_next(call, platform::sharing_violation());
    };
    const std::string code = "error.qnfile.directory";
    const std::string create = "|qnfile::create_directory()|Failed to create directory";
    const std::string remove = code + "|qnfile::remove_directory()|";
    const std::string link = code + "|qnfile::impl::remove_win32_reparse_point()|Failed to ";
    const std::string accessible = "|qnfile::is_accessible_directory()|";
    check_failures({
        {[&](auto* e) { create_directory(directory, mode, e, false); },
         code + ".alreadyExists" + create + " because it already exists. Base path=\"" + directory +
             "\" Access mode=7"},
        {[&](auto* e) { create_directory(no_such, mode, e, false); },
         code + create + ". Base path=\"" + no_such + "\" Access mode=7))"},
        {[&](auto* e) { create_directory(odd + "/x", mode, e, true); },
         code +
             ".notFound|qnfile::impl::create_directory_recursive()|"
             "Failed to get parent directory stats. Full path=\"" +
             odd + "\""},
        {[&](auto* e) { impl::create_directory_recursive(no_such, mode, e, -1); },
         code + "|qnfile::impl::create_directory_recursive()|Recursive parent directory limit "
                "reached."},
        {[&](auto* e) { remove_directory(directory, e); },
         remove + "Failed to remove directory. Base path=\"" + directory + "\""},
        {[&](auto* e) { remove_directory(directory, remove_empty_only, e); },
         remove + "Failed to remove directory. Base path=\"" + directory + "\""},
        {[&](auto* e) { remove_directory(nested(1), recursive, e); },
         remove + "Recursive child directory limit reached."},
        {[&](auto* e) {
             fail_next(Call::remove_file);
             remove_directory(deep, recursive, e);
         },
         remove + "Failed to delete file (path=" + slashed(deep) + "/file)"},
        {[&](auto* e) { remove_directory(missing_, recursive, e); },
         code +
             ".notFound|qnfile::impl::DirectoryIteratorImplWin32::DirectoryIteratorImplWin32()|"
             "Failed to open directory entry reader. Base path=\"" +
             slashed(missing_) + "/*\""},
        {[&](auto* e) { impl::remove_win32_reparse_point(missing_, e); },
         link + "open file for reparse point removal. Path=\"" + missing_ + "\""},
        {[&](auto* e) { impl::remove_win32_reparse_point(directory, e); },
         link + "get reparse point data. Path=\"" + directory + "\""},
        {[&](auto* e) {
             fail_next(Call::remove_link);
             impl::remove_win32_reparse_point(directory, e);
         },
         link + "remove reparse point. Path=\"" + directory + "\""},
        {[&](auto* e) {
             fail_next(Call::remove_linked_directory);
             impl::remove_win32_reparse_point(directory, e);
         },
         link + "remove directory after removing reparse point. Base path=\"" + directory + "\""},
        {[&](auto* e) { set_current_directory(missing_, e); },
         code + "|qnfile::set_current_directory()|Failed to set current directory. Base path=\"" +
             missing_ + "\""},
        {[&](auto* e) {
             fail_next(Call::current_directory);
             EXPECT_EQ(get_current_directory(e), "");
         },
         code + "|qnfile::get_current_directory()|Failed to get current working directory. "
                "bufSize=260"},
        {[&](auto* e) { is_accessible_directory(missing_, {}, e); },
         code + ".notFound" + accessible + "Failed to get file system object attributes. Path: \"" +
             missing_ + "\"",
         true, false},
        {[&](auto* e) { is_accessible_directory(file_, access_check_write, e); },
         code + ".notDirectory" + accessible +
             "File system object exists but is not a directory. Path: \"" + file_ + "\"",
         false, false},
        {[&](auto* e) { is_accessible_directory(read_only, access_check_write, e); },
         code + ".access.notWrite" + accessible +
             "Directory exists but is not write-accessible. Path: \"" + read_only + "\"",
         false, false},
        {[&](auto* e) { is_accessible_directory(directory, access_check_hidden, e); },
         code + ".access.notHidden" + accessible + "Directory exists but is not hidden. Path: \"" +
             directory + "\"",
         false, false},
    });
    // The two texts of a directory that is not removed differ in the names of their parameters.
    ErrorInfoPtr alone;
    remove_directory(directory, &alone);
    EXPECT_EQ(*alone->params().find("basePath"), directory);
    ErrorInfoPtr in_tree;
    remove_directory(directory, remove_empty_only, &in_tree);
    EXPECT_EQ(*in_tree->params().find("path"), directory);
    EXPECT_THROW(create_directory({"a\0b", 3}, mode, nullptr, true), qncore::ErrorException);
    EXPECT_THROW(remove_directory({"a\0b", 3}, recursive, nullptr), qncore::ErrorException);
}

} // namespace
} // namespace qnfile
