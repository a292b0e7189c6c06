#include "platform/directory.h"
#include "platform/testing/testing.h"
#include "qnfile/directory.h"
#include "qnfile/file_utilities.h"
#include "qnuri/parse.h"
#include "tests/qnfile/expected_failure.h"
#include "tests/support/temporary_directory.h"

// File names as Windows has them.
namespace qnfile {
namespace {

using qncore::ErrorInfoPtr;

qnuri::UriReference uri_of(const std::string& text) {
    return qnuri::UriReference(qnuri::parse_uri_reference(text.data(), text.size(), false));
}

TEST(WindowsFileNames, OfUris) {
    const struct {
        const char* uri;
        const char* name;
    } cases[] = {
        {"file:///C:/dir/a%20b.txt", "c:\\dir\\a b.txt"},
        {"file://server/share/x", "\\\\server\\share\\x"},
        {"file://server", "\\\\server"},
        {"file:///", "\\"},
        {"file:///C:", "\\C:"},      // nothing behind the drive: required
        {"file:///%31:/x", "1:\\x"}, // the byte before the colon may be anything: required
        {"file:sub/x", "sub\\x"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(filename_from_uri(uri_of(c.uri), nullptr), c.name) << c.uri;
    }
    EXPECT_EQ(uri_from_filename("C:\\a b\\c%d.txt").text(), "file:///c:/a%20b/c%25d.txt");
    EXPECT_EQ(uri_from_filename("\\\\srv\\share\\x").text(), "file://srv/share/x");
}

TEST(WindowsFiles, CausesAreWindowsErrors) {
    const support::TemporaryDirectory directory;
    const std::string missing = directory.file("missing");
    const std::string file = directory.file("file");
    support::write_file(file, "content");
    const struct {
        std::function<void()> action;
        const char* number;
    } cases[] = {
        {[&] { delete_file(missing, nullptr); }, "2"},
        {[&] { copy_file(file, file, true, nullptr); }, "80"},
        {[&] { create_directory(directory.str(), 0, nullptr, true); }, "183"},
        {[&] { query_file_size(missing, nullptr); }, "2"}, // an errno
        {[&] { remove_directory(file, nullptr); }, "267"},
    };
    for (const auto& c : cases) {
        const auto info = failure_of(c.action);
        ASSERT_TRUE(info && info->nested());
        EXPECT_EQ(*info->nested()->params().find("number"), c.number) << info->text();
    }
    const std::string parent = directory.file("a|b");
    ErrorInfoPtr error;
    create_directory(parent + "\\x", 0, &error, true);
    expect_failure(error, {"error.qnfile.directory.notFound",
                           "Failed to get parent directory stats. Full path=\"" + parent + "\"",
                           "qnfile::impl::create_directory_recursive()"});
}

TEST(WindowsFiles, TheLargestTime) {
    const support::TemporaryDirectory directory;
    const std::string file = directory.file("file");
    support::write_file(file, "x");
    const std::int64_t largest = INT64_MAX;
    set_file_timestamp(file, nullptr, &largest, nullptr);
    std::int64_t modified = 0;
    get_file_timestamp(file, nullptr, &modified, nullptr);
    // The largest count of ticks, brought to nanoseconds in 64 bits.
    constexpr std::uint64_t epoch = 11'644'473'600'000'000'000U;
    EXPECT_EQ(modified, static_cast<std::int64_t>(std::uint64_t{INT64_MAX} * 100 - epoch));
}

} // namespace
} // namespace qnfile
