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

TEST_F(FileSystemTest, WhatIsThereAndWhatIsMade) {
    const std::string root = std::filesystem::path(directory_.str()).root_name().string();
    const struct {
        std::string path;
        bool is_found;
        bool is_directory;
        bool is_one_afterwards; ///< after FileUtilities::create_directory()
    } cases[] = {
        {file_, true, false, false},         {directory_.str(), true, true, true},
        {missing_, false, false, true},      {directory_.file("no/such"), false, false, false},
        {"", false, false, false},           {root.empty() ? "/" : root, true, true, true},
        {file_ + "/x", false, false, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.path);
        EXPECT_EQ(FileUtilities::located_file(c.path), c.is_found);
        EXPECT_EQ(check_existence(c.path).is_not_found(), !c.is_found);
        EXPECT_EQ(check_read_write_access(c.path).is_not_found(), !c.is_found);
        EXPECT_EQ(is_directory(c.path), c.is_directory);
        EXPECT_EQ(FileUtilities::create_directory(c.path), c.is_one_afterwards);
        EXPECT_EQ(is_directory(c.path), c.is_one_afterwards);
    }
}

TEST_F(FileSystemTest, KeyFilesKeepTheirContentAndAreHeldAlone) {
    {
        const OpenFile made(open_key_file(missing_));
        ASSERT_TRUE(made) << describe(made.error());
        EXPECT_EQ(*write_file(made.get(), "key", 3), 3U);
        EXPECT_TRUE(OpenFile(open_key_file(missing_)).error().is_sharing_violation());
        EXPECT_TRUE((Opener{FileAccess::read, FileSharing::read_write}).open(missing_));
        EXPECT_FALSE((Opener{FileAccess::write, FileSharing::read_write}).open(missing_));
    }
    const OpenFile again(open_key_file(missing_));
    EXPECT_EQ(*file_size(again.get()), 3U);
    EXPECT_FALSE(OpenFile(open_key_file(directory_.str())));
    EXPECT_FALSE(OpenFile(open_key_file(directory_.file("no/such"))));
}

} // namespace
} // namespace platform
