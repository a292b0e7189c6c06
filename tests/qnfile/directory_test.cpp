#include "qnfile/directory.h"

#include <filesystem>
#include <fstream>

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

    support::TemporaryDirectory directory_;
    std::string file_ = directory_.file("file");
    std::string missing_ = directory_.file("missing");
};

TEST_F(DirectoryTest, CreatesWhatIsMissingAbove) {
    struct Case {
        const char* path;
        bool recursive;
        const char* code; ///< null when it succeeds
    };
    // One after the other in the same directory.
    const Case cases[] = {
        {"a", false, nullptr},
        {"a", false, "error.qnfile.directory.alreadyExists"},
        {"a", true, "error.qnfile.directory.alreadyExists"},
        {"a/b/c", false, "error.qnfile.directory"},
        {"a/b/c/", true, nullptr},
        {"a/b/c/d//e", true, nullptr},
        {"file/x", true, "error.qnfile.directory"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.path << " " << c.recursive);
        ErrorInfoPtr error;
        create_directory(directory_.file(c.path), mode, &error, c.recursive);
        ASSERT_EQ(error != nullptr, c.code != nullptr) << (error ? error->text() : "");
        if (error) {
            EXPECT_EQ(error->code().path(), c.code);
        }
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
    create_directory("here", mode, nullptr, true);
    set_current_directory(before, nullptr);
    EXPECT_EQ(fs::path(current), fs::canonical(inner));
    EXPECT_NE(current.back(), platform::preferred_separator);
    EXPECT_TRUE(fs::exists(inner / "here"));
}

TEST_F(DirectoryTest, AccessibleIsAQuestion) {
    EXPECT_TRUE(is_accessible_directory(directory_.str(), access_check_write, nullptr));
    fs::permissions(directory_.path(), fs::perms::owner_read | fs::perms::owner_exec);
    EXPECT_TRUE(is_accessible_directory(directory_.str(), access_check_read, nullptr));
    EXPECT_FALSE(is_accessible_directory(directory_.str(), access_check_write, nullptr));
    fs::permissions(directory_.path(), fs::perms::owner_all);
    EXPECT_FALSE(is_accessible_directory(missing_, {}, nullptr)) << "and never throws";
    ErrorInfoPtr error;
    EXPECT_FALSE(is_accessible_directory(missing_, {}, &error));
    EXPECT_FALSE(is_accessible_directory(file_, {}, &error)) << "replaces what the slot held";
    EXPECT_EQ(error->code().path(), "error.qnfile.directory.notDirectory");
}

TEST_F(DirectoryTest, EveryFailureByItsCodeMessagePlaceAndCause) {
    const std::string directory = directory_.str();
    const std::string read_only = directory_.file("read_only");
    fs::create_directory(read_only);
    fs::permissions(read_only, fs::perms::owner_read | fs::perms::owner_exec);
    fs::create_directories(nested(54));
    const std::string full = directory_.file("full");
    fs::create_directory(full);
    support::write_file(full + "/file", "x");
    const std::string without_parent = directory_.file("no/such");
    const auto fail_next = [](Call call) {
        platform::testing::fail_next(call, platform::sharing_violation());
    };
    constexpr const char* code = "error.qnfile.directory";
    constexpr const char* create = "qnfile::create_directory()";
    constexpr const char* remove = "qnfile::remove_directory()";
    constexpr const char* accessible = "qnfile::is_accessible_directory()";
    struct Case {
        std::function<void(ErrorInfoPtr*)> action;
        ExpectedFailure expected;
        bool throws = true; ///< without a slot
    };
    const Case cases[] = {
        {[&](auto* e) { create_directory(directory, mode, e, false); },
         {"error.qnfile.directory.alreadyExists",
          "Failed to create directory because it already exists. Base path=\"" + directory +
              "\" Access mode=7",
          create}},
        {[&](auto* e) { create_directory(without_parent, mode, e, false); },
         {code, "Failed to create directory. Base path=\"" + without_parent + "\" Access mode=7))",
          create}},
        {[&](auto* e) { impl::create_directory_recursive(without_parent, mode, e, -1); },
         {code, "Recursive parent directory limit reached.",
          "qnfile::impl::create_directory_recursive()"}},
        {[&](auto* e) { remove_directory(directory, e); },
         {code, "Failed to remove directory. Base path=\"" + directory + "\"", remove}},
        {[&](auto* e) { remove_directory(directory, remove_empty_only, e); },
         {code, "Failed to remove directory. Base path=\"" + directory + "\"", remove}},
        {[&](auto* e) { remove_directory(nested(1), recursive, e); },
         {code, "Recursive child directory limit reached.", remove}},
        {[&](auto* e) {
             fail_next(Call::remove_file);
             remove_directory(full, recursive, e);
         },
         {code, "Failed to delete file (path=" + full + "/file)", remove}},
        {[&](auto* e) { remove_directory(missing_, recursive, e); },
         {"error.qnfile.directory.notFound",
          "Failed to open directory entry reader. Base path=\"" + missing_ + "/*\"",
          "qnfile::impl::DirectoryIteratorImplWin32::DirectoryIteratorImplWin32()"}},
        {[&](auto* e) { remove_directory(missing_, remove_empty_only, e); },
         {"error.qnfile.directory.notFound",
          "Failed to get directory entry stats. Full path=\"" + missing_ + "\"",
          "qnfile::impl::DirectoryEntryImplWin32::create_from_full_path()"}},
        {[&](auto* e) { impl::remove_win32_reparse_point(missing_, e); },
         {code, "Failed to open file for reparse point removal. Path=\"" + missing_ + "\"",
          "qnfile::impl::remove_win32_reparse_point()"}},
        {[&](auto* e) { impl::remove_win32_reparse_point(directory, e); },
         {code, "Failed to get reparse point data. Path=\"" + directory + "\"",
          "qnfile::impl::remove_win32_reparse_point()"}},
        {[&](auto* e) { set_current_directory(missing_, e); },
         {code, "Failed to set current directory. Base path=\"" + missing_ + "\"",
          "qnfile::set_current_directory()"}},
        {[&](auto* e) {
             fail_next(Call::current_directory);
             EXPECT_EQ(get_current_directory(e), "");
         },
         {code, "Failed to get current working directory. bufSize=260",
          "qnfile::get_current_directory()"}},
        {[&](auto* e) { is_accessible_directory(missing_, {}, e); },
         {"error.qnfile.directory.notFound",
          "Failed to get file system object attributes. Path: \"" + missing_ + "\"", accessible},
         false},
        {[&](auto* e) { is_accessible_directory(file_, access_check_write, e); },
         {"error.qnfile.directory.notDirectory",
          "File system object exists but is not a directory. Path: \"" + file_ + "\"", accessible,
          false},
         false},
        {[&](auto* e) { is_accessible_directory(read_only, access_check_write, e); },
         {"error.qnfile.directory.access.notWrite",
          "Directory exists but is not write-accessible. Path: \"" + read_only + "\"", accessible,
          false},
         false},
        {[&](auto* e) { is_accessible_directory(read_only, access_check_hidden, e); },
         {"error.qnfile.directory.access.notHidden",
          "Directory exists but is not hidden. Path: \"" + read_only + "\"", accessible, false},
         false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected.message);
        ErrorInfoPtr slot;
        c.action(&slot);
        expect_failure(slot, c.expected);
        if (c.throws) {
            expect_failure(failure_of([&] { c.action(nullptr); }), c.expected);
        }
    }
    fs::permissions(read_only, fs::perms::owner_all);
    const std::string zero("a\0b", 3);
    EXPECT_THROW(create_directory(zero, mode, nullptr, true), qncore::ErrorException);
    EXPECT_THROW(remove_directory(zero, recursive, nullptr), qncore::ErrorException);
}

} // namespace
} // namespace qnfile
