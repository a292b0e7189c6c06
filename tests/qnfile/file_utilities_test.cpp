#include "qnfile/file_utilities.h"

#include "platform/path.h"
#include "qnfile/directory.h"
#include "qnfile/read_stream_view.h"
#include "tests/qnfile/file_fixture.h"

namespace qnfile {
namespace {

using qnuri::UriReference;

class FileUtilitiesTest : public FileFixture {
  protected:
    FileUtilitiesTest() {
        file_ = path("a file #1 %41 \xC3\xA9");
        uri_ = uri_from_filename(file_);
        support::write_file(file_, "content");
    }

    UriReference uri_;
};

TEST_F(FileUtilitiesTest, StreamsOpenByUri) {
    FileWriteStream::create(qnuri::to_uri(uri_), create_always, share_none, flag_none)
        ->write("new", 3);
    FileReadWriteStream::create(uri_, open_existing, share_none, flag_none)->resize(2);
    EXPECT_EQ(FileReadStream::create(uri_, share_none, flag_none)->available(), 2U);
    EXPECT_EQ(FileReadStreamView::create(uri_, share_none, flag_none)->available(), 2U);
    EXPECT_EQ(DirectoryEntry::create_from_full_path(uri_).name(), "a file #1 %41 \xC3\xA9");
    EXPECT_EQ(code_of([] { FileReadStream::create(qnuri::Uri(), share_none, flag_none); }),
              "error.qnfile.filename.uri");
}

TEST_F(FileUtilitiesTest, RelativeReferencesStartInTheCurrentDirectory) {
    fs::create_directory(path("sub dir"));
    fs::current_path(path("sub dir"));
    const auto current = get_current_directory_as_uri();
    const std::string directory = filename_from_uri(current, nullptr);
    EXPECT_TRUE(fs::equivalent(fs::path(directory).parent_path(), path("sub dir")));
    EXPECT_EQ(filename_from_uri(uri_of("x/%3fy?query#f"), nullptr),
              directory + "x" + platform::preferred_separator + "?y");
    EXPECT_EQ(fs::path(filename_from_uri(uri_of("../x"), nullptr)),
              fs::path(directory).parent_path().parent_path() / "x");
    const std::string above = "../../../../../../../../../../../../../../../../../../../../x";
    support::check_failures(
        {{[&](auto* e) { EXPECT_EQ(filename_from_uri(uri_of(above), e), ""); },
          "error.qnfile.filename.uri|qnfile::filename_from_uri()|Resolution of URI " + above +
              " against current directory (" + current.text() + ") failed",
          "errno 22"}});
}

TEST_F(FileUtilitiesTest, PlacesOfThisProcess) {
    const auto program = filename_from_uri(get_application_filepath_as_uri(), nullptr);
    EXPECT_EQ(fs::path(program).stem(), "test_qnfile");
    EXPECT_TRUE(fs::exists(program));
    const std::string temporary = get_temp_directory();
    EXPECT_TRUE(fs::is_directory(temporary));
    EXPECT_EQ(temporary.find_first_of(std::string("\\\0", 2)), std::string::npos);
}

TEST_F(FileUtilitiesTest, CopiesWholeFilesOrNone) {
    const std::string target = path("target");
    for (const auto& content :
         {std::string(), std::string(3 << 20, 'x') + "end", std::string("y")}) {
        support::write_file(file_, content);
        copy_file(file_, target, false, nullptr);
        EXPECT_EQ(support::read_file(target), content);
    }
    ErrorInfoPtr error;
    copy_file(uri_, uri_, false, &error);
    EXPECT_TRUE(error) << "onto itself";
    EXPECT_EQ(support::read_file(file_), "y");
    const UriReference missing_uri = uri_from_filename(missing_);
    copy_file(uri_, missing_uri, true, nullptr);
    EXPECT_EQ(support::read_file(missing_), "y");
    delete_file(missing_uri, nullptr);
    EXPECT_FALSE(fs::exists(missing_));
}

TEST_F(FileUtilitiesTest, TimesAndSizes) {
    const std::int64_t grain = platform::paths_have_drives ? 100 : 1;
    const std::int64_t other = 1'500'000'000'000'000'000;
    for (const std::int64_t time : {std::int64_t{0}, std::int64_t{1'600'000'000'123'456'789},
                                    std::int64_t{-1}, std::int64_t{-1'000'000'000'050}}) {
        for (const std::string& path : {file_, directory_.str()}) {
            std::int64_t accessed = 0;
            std::int64_t modified = 0;
            set_file_timestamp(uri_from_filename(path), &other, &time, nullptr);
            set_file_timestamp(path, nullptr, nullptr, nullptr);
            get_file_timestamp(uri_from_filename(path), nullptr, nullptr, nullptr);
            get_file_timestamp(path, &accessed, &modified, nullptr);
            EXPECT_EQ(accessed, other);
            EXPECT_EQ(modified / grain, time / grain);
        }
    }
    EXPECT_EQ(query_file_size(file_, nullptr), 7U);
    EXPECT_EQ(query_file_size(uri_, nullptr), 7U);
}

TEST_F(FileUtilitiesTest, WhatIsNoLinkResolvesToItself) {
    // Wine has a prefix of its own before the drive.
    EXPECT_THAT(resolve_link(file_, nullptr),
                ::testing::EndsWith(file_.substr(file_.find("orva-"))));
    EXPECT_EQ(resolve_link(uri_, nullptr), uri_);
    ErrorInfoPtr error;
    support::write_file(file_, "");
    EXPECT_EQ(resolve_link(file_, &error), "");
    EXPECT_FALSE(error) << "an empty file has no path: required";
    EXPECT_EQ(resolve_link(directory_.str(), &error), "");
    EXPECT_TRUE(error);
    error.reset();
    EXPECT_TRUE(resolve_link(uri_from_filename(missing_), &error).is_undefined());
    EXPECT_TRUE(error);
}

} // namespace
} // namespace qnfile
