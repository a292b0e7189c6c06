#include <filesystem>

#include "platform/testing/testing.h"
#include "qnfile/directory.h"
#include "qnfile/file_stream.h"
#include "qnfile/file_utilities.h"
#include "qnfile/read_stream_view.h"
#include "qnuri/parse.h"
#include "tests/qnfile/expected_failure.h"
#include "tests/support/temporary_directory.h"

// File names as Windows has them.
namespace qnfile {
namespace {

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
    const auto view = FileReadStreamView::create(file, share_read_write, flag_none);
    std::filesystem::resize_file(file, 0);
    char byte = 0;
    const struct {
        std::function<void()> action;
        const char* cause;
    } cases[] = {
        {[&] { delete_file(missing, nullptr); }, "windows 2"},
        {[&] { copy_file(file, file, true, nullptr); }, "windows 80"},
        {[&] { create_directory(directory.str(), 0, nullptr, true); }, "windows 183"},
        {[&] { query_file_size(missing, nullptr); }, "errno 2"},
        {[&] { remove_directory(file, nullptr); }, "windows 267"},
        {[&] { impl::create_directory_recursive(missing + "/a", 0, nullptr, -1); }, "errno 7"},
        {[&] { view->read(&byte, 1); }, "windows 38"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(cause_of(c.action), c.cause);
    }
    check_failures(
        {{[&](auto* e) {
              platform::testing::fail_next(platform::Call::path_of_file,
                                           platform::SystemError::windows(8));
              EXPECT_EQ(resolve_link(file, e), "");
          },
          "error.qnfile.filename.uri|qnfile::resolve_link|Path '" + file + "' too long: 260"}});
}

TEST(WindowsFiles, TheLargestTimeIsMoreThanItsNanoseconds) {
    const support::TemporaryDirectory directory;
    const std::string file = directory.file("file");
    support::write_file(file, "x");
    constexpr std::int64_t last_tick = INT64_MAX / 100 * 100;
    std::int64_t modified = 0;
    for (const std::int64_t time : {last_tick, std::int64_t{INT64_MAX}}) {
        set_file_timestamp(file, nullptr, &time, nullptr);
        get_file_timestamp(file, nullptr, &modified, nullptr);
        EXPECT_EQ(modified == last_tick, time == last_tick) << modified;
    }
}

} // namespace
} // namespace qnfile
