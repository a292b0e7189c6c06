#include <gmock/gmock.h>

#include "VDCertificatesFileUtilities/file_utilities.h"
#include "platform/file_system.h"
#include "platform/key_file.h"
#include "tests/platform/openers.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

constexpr Opener writer{FileAccess::write, FileSharing::read_write};
constexpr Opener reader_alone{FileAccess::read, FileSharing::none};

class FileTest : public ::testing::Test {
  protected:
    FileTest() { support::write_file(name_, "content"); }

    std::string content() const { return support::read_file(name_); }

    support::TemporaryDirectory directory_;
    std::string missing_ = directory_.file("missing");
    std::string name_ = directory_.file("f \xC3\xA4\xE2\x82\xAC.bin");
};

CHILD_PROCESS(hold_file) {
    const Opener opener{static_cast<FileAccess>(std::stoi(arguments.at(1))),
                        static_cast<FileSharing>(std::stoi(arguments.at(2)))};
    const OpenFile file = opener.open(arguments.at(0));
    support::say(file ? "held" : "refused");
    support::wait_to_be_told();
    return 0;
}

support::ChildProcess holder_of(const std::string& name, const Opener& opener) {
    return {"hold_file",
            {name, std::to_string(static_cast<int>(opener.access)),
             std::to_string(static_cast<int>(opener.sharing))}};
}

TEST_F(FileTest, ShareModesInOneProcessAndBetweenTwo) {
    for (const Opener& first : all_openers()) {
        support::ChildProcess child = holder_of(name_, first);
        child.wait_for("held");
        for (const Opener& second : all_openers()) {
            SCOPED_TRACE(first.text() + " then " + second.text());
            const OpenFile other = second.open(name_);
            const bool admitted = first.admits(second) && second.admits(first);
            EXPECT_EQ(static_cast<bool>(other), admitted);
            EXPECT_EQ(other.error().is_sharing_violation(), !admitted);
            for (const Opener& third : all_openers()) {
                EXPECT_EQ(static_cast<bool>(third.open(name_)),
                          first.admits(third) && third.admits(first) &&
                              (!admitted || (second.admits(third) && third.admits(second))))
                    << third.text();
            }
        }
        child.tell();
        EXPECT_EQ(child.wait(), 0);
    }
    EXPECT_TRUE(reader_alone.open(name_)) << "nothing is left";
}

TEST_F(FileTest, ARefusedOpenLeavesTheContent) {
    for (const auto disposition :
         {FileDisposition::create_always, FileDisposition::truncate_existing}) {
        {
            const OpenFile holder = reader_alone.open(name_);
            EXPECT_TRUE(writer.open(name_, disposition).error().is_sharing_violation());
        }
        EXPECT_EQ(content(), "content");
    }
}

TEST_F(FileTest, ExistenceAndCreation) {
    const std::string root = std::filesystem::path(directory_.str()).root_name().string();
    const struct {
        std::string path;
        bool is_found;
        bool is_directory;
        bool is_one_afterwards; ///< after FileUtilities::create_directory()
    } cases[] = {
        {name_, true, false, false},         {directory_.str(), true, true, true},
        {missing_, false, false, true},      {directory_.file("no/such"), false, false, false},
        {"", false, false, false},           {root.empty() ? "/" : root, true, true, true},
        {name_ + "/x", false, false, false},
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

TEST_F(FileTest, KeyFilesKeepTheirContentAndAreHeldAlone) {
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
