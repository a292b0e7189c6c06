#include "qnfile/file_utilities.h"

#include <filesystem>

#include "platform/path.h"
#include "platform/testing/testing.h"
#include "qnfile/directory.h"
#include "qnfile/read_stream_view.h"
#include "qnuri/parse.h"
#include "tests/qnfile/expected_failure.h"
#include "tests/support/temporary_directory.h"

namespace qnfile {
namespace {

namespace fs = std::filesystem;
using platform::Call;
using qncore::ErrorInfoPtr;
using qnuri::UriReference;

UriReference uri_of(const std::string& text) {
    return UriReference(qnuri::parse_uri_reference(text.data(), text.size(), false));
}

class FileUtilitiesTest : public ::testing::Test {
  protected:
    FileUtilitiesTest() { support::write_file(file_, "content"); }

    support::TemporaryDirectory directory_;
    std::string file_ = directory_.file("a file #1 %41 \xC3\xA9");
    std::string missing_ = directory_.file("missing");
    UriReference uri_ = uri_from_filename(file_);
    UriReference missing_uri_ = uri_from_filename(missing_);
};

TEST_F(FileUtilitiesTest, StreamsOpenByUri) {
    EXPECT_TRUE(fs::equivalent(filename_from_uri(uri_, nullptr), file_));
    const auto create = [](const auto& uri) {
        return FileWriteStream::create(uri, create_always, share_none, flag_none);
    };
    create(qnuri::to_uri(uri_))->write("new", 3);
    FileReadWriteStream::create(uri_, open_existing, share_none, flag_none)->resize(2);
    EXPECT_EQ(FileReadStream::create(uri_, share_none, flag_none)->available(), 2U);
    EXPECT_EQ(FileReadStreamView::create(uri_, share_none, flag_none)->available(), 2U);
    for (const UriReference& nothing : {qnuri::UriReference(qnuri::Uri()), uri_of("http://h/x")}) {
        EXPECT_EQ(failure_of([&] { create(nothing); })->code().path(), "error.qnfile.filename.uri");
    }
}

TEST_F(FileUtilitiesTest, RelativeReferencesStartInTheCurrentDirectory) {
    const std::string before = get_current_directory(nullptr);
    const fs::path sub = directory_.path() / "sub dir";
    fs::create_directory(sub);
    set_current_directory(sub.string(), nullptr);
    const std::string uri = get_current_directory_as_uri().text();
    const std::string current = get_current_directory(nullptr);
    std::string above;
    ErrorInfoPtr error;
    const std::string below = filename_from_uri(uri_of("x/%3fy?query#f"), nullptr);
    const std::string beside = filename_from_uri(uri_of("../x"), nullptr);
    for (std::size_t level = 0; level < 60; ++level) {
        above += "../";
    }
    EXPECT_EQ(filename_from_uri(uri_of(above + "x"), &error), "");
    set_current_directory(before, nullptr);

    const std::string separator(1, platform::preferred_separator);
    EXPECT_TRUE(fs::equivalent(filename_from_uri(uri_of(uri), nullptr), sub));
    EXPECT_EQ(below, filename_from_uri(uri_of(uri), nullptr) + "x" + separator + "?y");
    EXPECT_EQ(fs::path(beside).parent_path(),
              fs::path(below).parent_path().parent_path().parent_path());
    expect_failure(
        error, {"error.qnfile.filename.uri",
                "Resolution of URI " + above + "x against current directory (" + uri + ") failed",
                "qnfile::filename_from_uri()"});
}

TEST_F(FileUtilitiesTest, PlacesOfThisProcess) {
    const auto program = filename_from_uri(get_application_filepath_as_uri(), nullptr);
    EXPECT_EQ(fs::path(program).stem(), "test_qnfile");
    EXPECT_TRUE(fs::exists(program));
    const std::string temporary = get_temp_directory();
    EXPECT_TRUE(fs::is_directory(temporary));
    EXPECT_EQ(temporary.find('\\'), std::string::npos);
    EXPECT_EQ(temporary.find('\0'), std::string::npos);
}

TEST_F(FileUtilitiesTest, CopiesWholeFilesOrNone) {
    std::string bytes(3 << 20, 'x');
    for (std::size_t i = 0; i < bytes.size(); i += 997) {
        bytes[i] = static_cast<char>(i);
    }
    const std::string target = directory_.file("target");
    for (const std::string& content : {std::string(), std::string("x"), bytes, std::string("y")}) {
        support::write_file(file_, content);
        const std::int64_t time = 1'234'567'890'123'456'700;
        set_file_timestamp(file_, nullptr, &time, nullptr);
        copy_file(file_, target, false, nullptr);
        EXPECT_EQ(support::read_file(target), content);
        std::int64_t copied = 0;
        get_file_timestamp(target, nullptr, &copied, nullptr);
        EXPECT_EQ(copied, time);
    }
    ErrorInfoPtr error;
    copy_file(uri_, uri_, false, &error);
    EXPECT_TRUE(error) << "onto itself";
    EXPECT_EQ(support::read_file(file_), "y");
    copy_file(uri_, missing_uri_, true, nullptr);
    EXPECT_EQ(support::read_file(missing_), "y");
    delete_file(missing_uri_, nullptr);
    EXPECT_FALSE(fs::exists(missing_));
}

TEST_F(FileUtilitiesTest, TimesAndSizes) {
    struct Case {
        std::int64_t set;
        std::int64_t got; ///< to the 100 ns that every system keeps
    };
    const Case cases[] = {{0, 0},
                          {1'600'000'000'123'456'789, 1'600'000'000'123'456'700},
                          {-1, 0},
                          {-1'000'000'000'050, -1'000'000'000'000}};
    for (const Case& c : cases) {
        for (const std::string& path : {file_, directory_.str()}) {
            const std::int64_t other = 1'500'000'000'000'000'000;
            std::int64_t accessed = 0;
            std::int64_t modified = 0;
            set_file_timestamp(uri_from_filename(path), &other, &c.set, nullptr);
            set_file_timestamp(path, nullptr, nullptr, nullptr);
            get_file_timestamp(uri_from_filename(path), nullptr, nullptr, nullptr);
            get_file_timestamp(path, &accessed, &modified, nullptr);
            EXPECT_EQ(accessed, other);
            EXPECT_EQ(modified / 100 * 100, c.got) << c.set;
        }
    }
    EXPECT_EQ(query_file_size(file_, nullptr), 7U);
    EXPECT_EQ(query_file_size(uri_, nullptr), 7U);
}

TEST_F(FileUtilitiesTest, WhatIsNoLinkResolvesToItself) {
    EXPECT_TRUE(fs::equivalent(resolve_link(file_, nullptr), file_));
    EXPECT_EQ(resolve_link(uri_, nullptr), uri_);
    ErrorInfoPtr error;
    support::write_file(file_, "");
    EXPECT_EQ(resolve_link(file_, &error), "");
    EXPECT_FALSE(error) << "an empty file has no path: required";
    EXPECT_EQ(resolve_link(directory_.str(), &error), "");
    EXPECT_TRUE(error);
    error.reset();
    EXPECT_TRUE(resolve_link(missing_uri_, &error).is_undefined());
    EXPECT_TRUE(error);
}

TEST_F(FileUtilitiesTest, EveryFailureByItsCodeMessagePlaceAndCause) {
    const auto fail_next = [](Call call) {
        platform::testing::fail_next(call, platform::sharing_violation());
    };
    const std::string one = " (Path=\"" + missing_ + "\")";
    const std::string other = directory_.file("other");
    constexpr const char* name_code = "error.qnfile.filename.uri";
    constexpr const char* io_code = "error.qnfile.io";
    constexpr const char* name_function = "qnfile::filename_from_uri()";
    constexpr const char* set_function = "qnfile::set_file_timestamp()";
    std::int64_t time = 0;
    struct Case {
        std::function<void(ErrorInfoPtr*)> action;
        ExpectedFailure expected;
    };
    const Case cases[] = {
        {[&](auto* e) { filename_from_uri(uri_of("file:///a{b"), e); },
         {name_code, "file:///a{b", name_function}},
        {[&](auto* e) { query_file_size(qnuri::Uri(), e); }, {name_code, "", name_function}},
        {[&](auto* e) { delete_file(uri_of("http://host/x"), e); },
         {name_code, "URI must have 'file:' scheme: http://host/x", name_function}},
        {[&](auto* e) { filename_from_uri(uri_of("file:"), e); },
         {name_code, "URI has an invalid path for a 'file:' scheme URI: file:", name_function}},
        {[&](auto* e) { copy_file(missing_, other, false, e); },
         {io_code, "Could not copy file (PathSrc=\"" + missing_ + "\" PathDst=\"" + other + "\")",
          "qnfile::copy_file()"}},
        {[&](auto* e) { copy_file(file_, directory_.str(), true, e); },
         {io_code,
          "Could not copy file (PathSrc=\"" + file_ + "\" PathDst=\"" + directory_.str() + "\")",
          "qnfile::copy_file()"}},
        {[&](auto* e) { delete_file(missing_, e); },
         {io_code, "Could not delete file" + one, "qnfile::delete_file()"}},
        {[&](auto* e) { get_file_timestamp(missing_, &time, nullptr, e); },
         {io_code, "Could not read file attributes" + one, "qnfile::get_file_timestamp()"}},
        {[&](auto* e) { set_file_timestamp(missing_, &time, nullptr, e); },
         {io_code, "Could not open file to be modified" + one, set_function}},
        {[&](auto* e) {
             fail_next(Call::set_times);
             set_file_timestamp(file_, &time, nullptr, e);
         },
         {io_code, "Could not set file time (Path=\"" + file_ + "\")", set_function}},
        {[&](auto* e) { query_file_size(missing_, e); },
         {io_code, "Can't determine the size of file '" + missing_ + "'",
          "qnfile::query_file_size()"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.expected.message);
        ErrorInfoPtr slot;
        c.action(&slot);
        expect_failure(slot, c.expected);
        expect_failure(failure_of([&] { c.action(nullptr); }), c.expected);
    }
    ErrorInfoPtr error;
    delete_file(missing_, &error);
    const std::string* target = error->params().find("filePathDst");
    EXPECT_TRUE(target != nullptr && target->empty()) << "both are set";

    // The two that raise the system's error as it is, and have no slot; and the open of a link.
    const struct {
        std::function<void()> action;
        const char* function;
    } bare[] = {
        {[&] {
             fail_next(Call::current_directory);
             get_current_directory_as_uri();
         },
         "qnfile::get_current_directory_as_uri()"},
        {[&] {
             fail_next(Call::application_path);
             get_application_filepath_as_uri();
         },
         "qnfile::get_application_filepath_as_uri()"},
        {[&] { resolve_link(missing_, nullptr); }, "qnfile::resolve_link"},
    };
    for (const auto& c : bare) {
        const auto info = failure_of(c.action);
        EXPECT_EQ(info->location().function.view(), c.function);
        EXPECT_FALSE(info->nested());
        EXPECT_TRUE(qncore::ErrorCode("error.qncore").covers(info->code()));
    }
    const std::string zero("a\0b", 3);
    EXPECT_THROW(query_file_size(zero, &error), qncore::ErrorException);
    EXPECT_THROW(delete_file(uri_of("file:///a%00b"), nullptr), qncore::ErrorException);
}

} // namespace
} // namespace qnfile
