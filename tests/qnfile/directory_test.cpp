#include "qnfile/directory.h"

#include "platform/path.h"
#include "tests/qnfile/file_fixture.h"

namespace qnfile {
namespace {

constexpr int mode = 7;

class DirectoryTest : public FileFixture {
  protected:
    /// The path of that many nested directories named "d".
    std::string nested(int levels) const {
        std::string path = this->path("deep");
        for (int level = 1; level < levels; ++level) {
            path += "/d";
        }
        return path;
    }
};

TEST_F(DirectoryTest, CreatesWhatIsMissingAbove) {
    for (const char* name : {"a", "a/b/c/", "a/b/c/d//e"}) {
        create_directory(path(name), mode, nullptr, true);
        EXPECT_EQ(code_of([&] { create_directory(path(name), mode, nullptr, true); }),
                  "error.qnfile.directory.alreadyExists");
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
    remove_directory(nested(2), remove_recursive, &error); // with 52 below it
    ASSERT_TRUE(error);
    EXPECT_TRUE(fs::exists(nested(54))) << "nothing was removed";
    support::write_file(nested(54) + "/file", "x");
    remove_directory(nested(3), remove_recursive, nullptr); // with 51
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
    remove_directory(tree.string(), remove_recursive, &error);
    EXPECT_TRUE(fs::exists(tree)) << "a slot that holds an error stops it at once";
    remove_directory(tree.string() + "/", remove_recursive, nullptr);
    EXPECT_FALSE(fs::exists(tree));
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

} // namespace
} // namespace qnfile
