#include "platform/file_system.h"
#include "platform/key_file.h"

#include <gmock/gmock.h>

#include "VDCertificatesFileUtilities/file_utilities.h"
#include "tests/platform/openers.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

class FileSystemTest : public ::testing::Test {
  protected:
    FileSystemTest() { support::write_file(file_, "x"); }

    support::TemporaryDirectory directory_;
    std::string file_ = directory_.file("file");
    std::string missing_ = directory_.file("missing");
};

TEST_F(FileSystemTest, Existence) {
    EXPECT_TRUE(exists(file_));
    EXPECT_TRUE(exists(directory_.str()));
    EXPECT_FALSE(exists(missing_));
    EXPECT_FALSE(check_existence(file_));
    EXPECT_TRUE(check_existence(missing_).is_not_found());
    EXPECT_FALSE(check_read_write_access(file_));
    EXPECT_TRUE(check_read_write_access(missing_).is_not_found());
    EXPECT_TRUE(is_directory(directory_.str()));
    EXPECT_FALSE(is_directory(file_));
    EXPECT_FALSE(is_directory(missing_));
}

TEST_F(FileSystemTest, CreateDirectory) {
    EXPECT_FALSE(create_directory(missing_));
    EXPECT_TRUE(is_directory(missing_));
    EXPECT_TRUE(create_directory(missing_).is_already_exists());
    EXPECT_TRUE(create_directory(file_).is_already_exists());
    EXPECT_TRUE(create_directory(directory_.file("no/such")).is_not_found());
}

TEST_F(FileSystemTest, FileUtilities) {
    EXPECT_TRUE(FileUtilities::create_directory(missing_));
    EXPECT_TRUE(FileUtilities::create_directory(missing_)) << "exists already";
    EXPECT_FALSE(FileUtilities::create_directory(file_)) << "a file is in the way";
    EXPECT_FALSE(FileUtilities::create_directory(directory_.file("no/such")));
    EXPECT_FALSE(FileUtilities::create_directory(""));
    EXPECT_TRUE(FileUtilities::located_file(file_));
    EXPECT_FALSE(FileUtilities::located_file(directory_.file("none")));
}

TEST_F(FileSystemTest, KeyFilesKeepTheirContentAndAreHeldAlone) {
    {
        const OpenFile made(open_key_file(missing_));
        ASSERT_TRUE(made) << describe(made.error());
        EXPECT_EQ(*write_file(made.get(), "key", 3), 3U);
        EXPECT_TRUE(OpenFile(open_key_file(missing_)).error().is_sharing_violation());
        EXPECT_TRUE(Opener(FileAccess::read, FileSharing::read_write).open(missing_));
        EXPECT_FALSE(Opener(FileAccess::write, FileSharing::read_write).open(missing_));
    }
    const OpenFile again(open_key_file(missing_));
    EXPECT_EQ(*file_size(again.get()), 3U);
    EXPECT_FALSE(OpenFile(open_key_file(directory_.str())));
    EXPECT_FALSE(OpenFile(open_key_file(directory_.file("no/such"))));
}

} // namespace
} // namespace platform
