#include <gmock/gmock.h>

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
    std::string name_ = directory_.file("f \xC3\xA4\xE2\x82\xAC.bin");
};

TEST_F(FileTest, Dispositions) {
    struct Case {
        FileDisposition disposition;
        bool opens_missing;
        bool opens_existing;
        const char* content_after;
    };
    const Case cases[] = {
        {FileDisposition::create_new, true, false, "content"},
        {FileDisposition::create_always, true, true, ""},
        {FileDisposition::open_always, true, true, "content"},
        {FileDisposition::open_existing, false, true, "content"},
        {FileDisposition::truncate_existing, false, true, ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(static_cast<int>(c.disposition));
        const std::string missing =
            directory_.file(std::to_string(static_cast<int>(c.disposition)));
        const OpenFile made = writer.open(missing, c.disposition);
        EXPECT_EQ(static_cast<bool>(made), c.opens_missing);
        EXPECT_EQ(made.error().is_not_found(), !c.opens_missing);
        EXPECT_EQ(std::filesystem::exists(missing), c.opens_missing);

        support::write_file(name_, "content");
        const OpenFile opened = writer.open(name_, c.disposition);
        EXPECT_EQ(static_cast<bool>(opened), c.opens_existing);
        EXPECT_EQ(opened.error().is_already_exists(), !c.opens_existing);
        EXPECT_EQ(content(), c.content_after);
        EXPECT_FALSE(writer.open(directory_.str(), c.disposition)) << "a directory";
    }
}

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

} // namespace
} // namespace platform
