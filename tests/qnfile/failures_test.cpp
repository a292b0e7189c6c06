#include <cstring>
#include <sstream>

#include "platform/path.h"
#include "qnfile/directory.h"
#include "qnfile/file_impl.h"
#include "qnfile/file_utilities.h"
#include "qnfile/read_stream_view.h"
#include "tests/qnfile/file_fixture.h"

namespace qnfile {
namespace {

using impl::FileImpl;
using qncore::seek_end;

constexpr int mode = 7;
constexpr auto device_error = platform::SystemError::posix(5);

/// A value that the enumeration does not have.
template <class Enumeration>
constexpr auto unknown = static_cast<Enumeration>(9);

class FailuresTest : public FileFixture {
  protected:
    FailuresTest() { support::write_file(file_, "content"); }

    /// Compares code, function and text ("error.qnfile." and "qnfile::" are added in front of the
    /// first two), with "{file}" and the like replaced. Causes are "linux|windows" where they
    /// differ.
    void check(std::vector<support::FailureCase> rows) const {
        const std::pair<const char*, const std::string&> names[] = {
            {"{file}", file_}, {"{missing}", missing_}, {"{dir}", dir_}, {"{base}", base_}};
        for (support::FailureCase& row : rows) {
            for (const auto& [name, value] : names) {
                for (std::size_t at; (at = row.report.find(name)) != std::string::npos;) {
                    row.report.replace(at, std::strlen(name), value);
                }
            }
            row.report.insert(row.report.find('|') + 1, "qnfile::").insert(0, "error.qnfile.");
            const std::size_t bar = row.cause.find('|');
            if (bar != std::string::npos) {
                row.cause = platform::paths_have_drives ? row.cause.substr(bar + 1)
                                                        : row.cause.substr(0, bar);
            }
        }
        support::check_failures(rows);
    }
    /// Runs the rest of an action while the next call of that kind fails.
    static void fail_next(Call call, platform::SystemError error = device_error) {
        platform::testing::fail_next(call, error);
    }
    FileImpl opened(impl::FileAccessMode access) const {
        return {file_, access, open_existing, share_read_write, flag_none};
    }
    /// Moves on from the only entry while the call fails.
    void step(Call call, ErrorInfoPtr* error) const {
        auto place = sequence("file").begin();
        fail_next(call);
        place.increment(error);
    }

    std::string dir_ = path("dir");
};

TEST_F(FailuresTest, OfStreams) {
    FileImpl reader = opened(impl::access_read);
    FileImpl writer = opened(impl::access_write);
    char byte = 0;
    const auto write_short = [&](const auto& stream) {
        fail_next(Call::write, {});
        stream->write("abc", 3);
    };
    const char* const short_write =
        "io.write|impl::FileWriteStreamImpl::write()|Writing to file \"{file}\" failed, 3 bytes "
        "attempted, 2 bytes written";
    check({
        {[&] {
             FileImpl(file_, unknown<impl::FileAccessMode>, open_existing, share_none, flag_none);
         },
         "io.open|impl::FileImpl::FileImpl()|Invalid access mode 9 to open file \"{file}\""},
        {[&] { FileReadStream::create(file_, unknown<FileShareMode>, flag_none); },
         "io.open|impl::FileImpl::FileImpl()|Invalid share mode 9 to open file \"{file}\""},
        {[&] {
             FileWriteStream::create(file_, unknown<FileCreationDisposition>, share_none,
                                     flag_none);
         },
         "io.open|impl::FileImpl::FileImpl()|Invalid creation disposition 9 to open file "
         "\"{file}\""},
        {[&] { FileReadStream::create(missing_, share_none, flag_none); },
         "io.open|impl::FileImpl::FileImpl()|Unable to open file \"{missing}\"",
         "errno 2|windows 2"},
        {[&] { writer.read(&byte, 1); },
         "io.read|impl::FileImpl::read()|Error reading from file \"{file}\"", "errno 9|windows 5"},
        {[&] { reader.write(&byte, 1); },
         "io.write|impl::FileImpl::write()|Writing to file \"{file}\" failed", "errno 9|windows 5"},
        {[&] {
             write_short(
                 FileWriteStream::create(file_, open_existing, share_read_write, flag_none));
         },
         short_write},
        {[&] {
             write_short(
                 FileReadWriteStream::create(file_, open_existing, share_read_write, flag_none));
         },
         short_write}, // the same place, though another class: required
        {[&] { reader.resize(12); },
         "io.resize|impl::FileImpl::resize()|Resizing file \"{file}\" to 12 bytes failed",
         "system"},
        {[&] {
             fail_next(Call::size);
             reader.size();
         },
         "io.size|impl::FileImpl::size()|Getting file size for file \"{file}\" failed", "errno 5"},
        {[&] { reader.seek(-5, unknown<qncore::SeekOrigin>); },
         "io.seek.badOrigin|impl::FileImpl::seek()|Invalid origin 9 in seek to offset -5 in file "
         "\"{file}\"."},
        {[&] { reader.seek(-8, seek_end); },
         "io.seek|impl::FileImpl::seek()|Seeking to offset -8 from origin 2 in file \"{file}\" "
         "failed",
         "errno 22|windows 131"},
    });
}

TEST_F(FailuresTest, OfViews) {
    const auto root = FileReadStreamView::create(file_, share_read_write, flag_none);
    const auto child = root->create_view(2, 5);
    const auto later = root->create_view(5);
    later->seek(1, qncore::seek_begin);
    fs::resize_file(file_, 5);
    char byte = 0;
    check({
        {[&] { child->create_view(1, 4); },
         "io.view.badRange|impl::FileReadStreamViewImpl:ReadStreamViewImpl::ReadStreamViewImpl()|"
         "Invalid view range (3,4) for file \"{file}\" with size 5."},
        {[&] { root->create_view(6); },
         "io.view.badRange|impl::FileReadStreamViewImpl:RootView::create_view()|Invalid view range "
         "(6,18446744073709551615) for root view of \"{file}\" with view size 5."},
        {[&] { root->create_view(4, 2); },
         "io.view.badRange|impl::FileReadStreamViewImpl:RootView::create_view()|Invalid view range "
         "(4,2) for root view of \"{file}\" with view size 5."},
        {[&] { child->create_view(6, 0); },
         "io.view.badRange|impl::FileReadStreamViewImpl::create_view()|Invalid view range (6,0) "
         "for view of \"{file}\" with view size 5."},
        {[&] { child->create_view(2, 4); },
         "io.view.badRange|impl::FileReadStreamViewImpl::create_view()|Invalid view range (2,4) "
         "for view of \"{file}\" with view size 5."},
        {[&] { child->seek(-5, unknown<qncore::SeekOrigin>); },
         "io.seek.badOrigin|impl::FileReadViewFactoryImpl:FileReadView::seek()|Invalid origin 9 in "
         "seek to offset -5 in file \"{file}\"."},
        {[&] { later->read(&byte, 1); },
         "io.read|impl::FileImpl::read()|Error reading from file \"{file}\"",
         "errno 61|windows 38"},
    });
    EXPECT_EQ(later->seek(0, qncore::seek_current), 1U) << "a failed read moves nothing";
}

TEST_F(FailuresTest, OfWalks) {
    make({"dir/", "gone/", "there/"});
    auto end = DirectorySequence().end();
    std::ostringstream address;
    address << static_cast<const void*>(&end);
    check({
        {[&](auto* e) { EXPECT_FALSE(sequence("", e, "missing/")); },
         "directory.notFound|impl::DirectoryIteratorImplWin32::DirectoryIteratorImplWin32()|"
         "Failed to open directory entry reader. Base path=\"{base}missing/*\"",
         "errno 2|windows 3"},
        {[&](auto* e) { step(Call::read_directory, e); },
         "directory.iterator|impl::DirectoryIteratorImplWin32::increment()", "errno 5"},
        {[&](auto* e) { step(Call::close_directory, e); },
         "directory.iterator|impl::DirectoryIteratorImplWin32::close()", "errno 5"},
        {[&](auto* e) {
             auto first = sequence("gone|there").begin();
             auto second = first++;
             fs::rename(path(second->name()), path("renamed"));
             const std::string name = second->name();
             const auto error = error_of([&] { second.increment(e); });
             fs::rename(path("renamed"), path(name));
             EXPECT_EQ(second, end) << "also if it is thrown";
             EXPECT_EQ(*(e ? *e : error)->params().find("name"), name);
             if (error) {
                 qncore::throw_error(error);
             }
         },
         "directory.iterator|impl::DirectoryEntryImplWin32::increment()"},
        {[&](auto* e) { end.increment(e); },
         "directory.iterator|DirectorySequence::DirectoryIterator::increment()|DirectoryIterator "
         "overrun. this=" +
             address.str()},
        {[&](auto* e) { EXPECT_FALSE(DirectoryEntry::create_from_full_path(missing_ + "/", e)); },
         "directory.notFound|impl::DirectoryEntryImplWin32::create_from_full_path()|Failed to get "
         "directory entry stats. Full path=\"{missing}\"",
         "errno 2|windows 2"},
    });
    for (const Call call : {Call::read_directory, Call::close_directory}) {
        const auto error = error_of([&] { step(call, nullptr); });
        EXPECT_THAT(*error->params().find("handle"), testing::StartsWith("0x"));
    }
}

TEST_F(FailuresTest, OfDirectories) {
    fs::create_directories(dir_ + "/sub");
    support::write_file(dir_ + "/sub/file", "x");
    const std::string no_such = missing_ + "/such";
    const std::string odd = platform::paths_have_drives ? path("a|b") : path(std::string(300, 'x'));
    const std::string closed = platform::paths_have_drives ? "Z:\\proc" : path("closed");
    fs::create_directory(path("closed"));
    fs::permissions(path("closed"), fs::perms::owner_read);
    check({
        {[&](auto* e) { create_directory(dir_, mode, e, false); },
         "directory.alreadyExists|create_directory()|Failed to create directory because it already "
         "exists. Base path=\"{dir}\" Access mode=7",
         "errno 17|windows 183"},
        {[&](auto* e) { create_directory(no_such, mode, e, false); },
         "directory|create_directory()|Failed to create directory. Base path=\"" + no_such +
             "\" Access mode=7))",
         "errno 2|windows 3"},
        {[&](auto* e) { create_directory(file_ + "/x/y", mode, e, true); },
         "directory|create_directory()", "errno 20|windows 3"},
        {[&](auto* e) { create_directory(odd + "/x", mode, e, true); },
         "directory.notFound|impl::create_directory_recursive()|Failed to get parent directory "
         "stats. Full path=\"" +
             odd + "\"",
         "errno 36|windows 123"},
        {[&](auto* e) { impl::create_directory_recursive(no_such, mode, e, -1); },
         "directory|impl::create_directory_recursive()", "errno 7"},
        {[&](auto* e) { remove_directory(dir_, e); },
         "directory|remove_directory()|Failed to remove directory. Base path=\"{dir}\"",
         "errno 39|windows 145"},
        {[&](auto* e) { remove_directory(file_, e); }, "directory|remove_directory()",
         "errno 20|windows 267"},
        {[&](auto* e) { remove_directory(dir_, remove_empty_only, e); },
         "directory|remove_directory()|Failed to remove directory. Base path=\"{dir}\"",
         "errno 39|windows 145"},
        {[&](auto* e) { impl::remove_directory_tree(dir_, remove_recursive, -1, e); },
         "directory|remove_directory()", "errno 7"},
        {[&](auto* e) {
             fail_next(Call::remove_file);
             remove_directory(dir_, remove_recursive, e);
         },
         "directory|remove_directory()|Failed to delete file (path={base}dir/sub/file)", "errno 5"},
        {[&](auto* e) {
             fail_next(Call::open_directory);
             remove_directory(dir_, remove_recursive, e);
         },
         "directory.notFound|impl::DirectoryIteratorImplWin32::DirectoryIteratorImplWin32()",
         "errno 5"},
        {[&](auto* e) { remove_directory(missing_, remove_recursive, e); },
         "directory.notFound|impl::DirectoryIteratorImplWin32::DirectoryIteratorImplWin32()",
         "system"},
        {[&](auto* e) { impl::remove_win32_reparse_point(missing_, e); },
         "directory|impl::remove_win32_reparse_point()|Failed to open file for reparse point "
         "removal. Path=\"{missing}\"",
         "errno 2|windows 2"},
        {[&](auto* e) { impl::remove_win32_reparse_point(dir_, e); },
         "directory|impl::remove_win32_reparse_point()|Failed to get reparse point data. "
         "Path=\"{dir}\"",
         "system"},
        {[&](auto* e) {
             fail_next(Call::remove_link);
             impl::remove_win32_reparse_point(dir_, e);
         },
         "directory|impl::remove_win32_reparse_point()|Failed to remove reparse point. "
         "Path=\"{dir}\"",
         "errno 5"},
        {[&](auto* e) {
             fail_next(Call::remove_linked_directory);
             impl::remove_win32_reparse_point(dir_, e);
         },
         "directory|impl::remove_win32_reparse_point()|Failed to remove directory after removing "
         "reparse point. Base path=\"{dir}\"",
         "errno 5"},
        {[&](auto* e) { set_current_directory(missing_, e); },
         "directory|set_current_directory()|Failed to set current directory. Base "
         "path=\"{missing}\"",
         "errno 2|windows 2"},
        {[&](auto* e) {
             fail_next(Call::current_directory);
             EXPECT_EQ(get_current_directory(e), "");
         },
         "directory|get_current_directory()|Failed to get current working directory. bufSize=260",
         "errno 5"},
    });
    // The two texts of a directory that is not removed differ in the names of their parameters.
    EXPECT_TRUE(error_of([&] { remove_directory(dir_, nullptr); })->params().find("basePath"));
    EXPECT_TRUE(error_of([&] { remove_directory(dir_, remove_empty_only, nullptr); })
                    ->params()
                    .find("path"));
    const auto accessible = [&](const std::string& path, DirectoryAccessFlags flags) {
        return [path, flags] {
            ErrorInfoPtr error;
            EXPECT_FALSE(is_accessible_directory(path, flags, nullptr)) << "never throws";
            EXPECT_FALSE(is_accessible_directory(path, flags, &error));
            qncore::throw_error(error);
        };
    };
    check({
        {accessible(missing_, access_check_none),
         "directory.notFound|is_accessible_directory()|Failed to get file system object "
         "attributes. Path: \"{missing}\"",
         "errno 2|windows 2"},
        {accessible(file_, access_check_write),
         "directory.notDirectory|is_accessible_directory()|File system object exists but is not a "
         "directory. Path: \"{file}\""},
        {accessible(closed, access_check_write | access_check_hidden),
         "directory.access.notWrite|is_accessible_directory()|Directory exists but is not "
         "write-accessible. Path: \"" +
             closed + "\""},
        {accessible(dir_, access_check_hidden),
         "directory.access.notHidden|is_accessible_directory()|Directory exists but is not hidden. "
         "Path: \"{dir}\""},
    });
    EXPECT_TRUE(is_accessible_directory(dir_, access_check_write, nullptr));
    EXPECT_TRUE(is_accessible_directory(closed, access_check_read, nullptr));
}

TEST_F(FailuresTest, OfFileUtilities) {
    const std::string other = path("other");
    std::int64_t time = 0;
    check({
        {[&](auto* e) { filename_from_uri(uri_of("file:///a{b"), e); },
         "filename.uri|filename_from_uri()|file:///a{b", "errno 22"},
        {[&](auto* e) { query_file_size(qnuri::Uri(), e); }, "filename.uri|filename_from_uri()|",
         "errno 22"},
        {[&](auto* e) { delete_file(uri_of("http://host/x"), e); },
         "filename.uri|filename_from_uri()|URI must have 'file:' scheme: http://host/x",
         "errno 22"},
        {[&](auto* e) { filename_from_uri(uri_of("file:"), e); },
         "filename.uri|filename_from_uri()|URI has an invalid path for a 'file:' scheme URI: "
         "file:",
         "errno 22"},
        {[&](auto* e) { copy_file(missing_, other, false, e); },
         "io|copy_file()|Could not copy file (PathSrc=\"{missing}\" PathDst=\"" + other + "\")",
         "errno 2|windows 2"},
        {[&](auto* e) { copy_file(file_, file_, true, e); },
         "io|copy_file()|Could not copy file (PathSrc=\"{file}\" PathDst=\"{file}\")",
         "errno 17|windows 80"},
        {[&](auto* e) { delete_file(missing_, e); },
         "io|delete_file()|Could not delete file (Path=\"{missing}\")", "errno 2|windows 2"},
        {[&](auto* e) { delete_file(file_ + "/", e); }, "io|delete_file()", "system"},
        {[&](auto* e) { get_file_timestamp(missing_, &time, nullptr, e); },
         "io|get_file_timestamp()|Could not read file attributes (Path=\"{missing}\")",
         "errno 2|windows 2"},
        {[&](auto* e) { set_file_timestamp(missing_, &time, nullptr, e); },
         "io|set_file_timestamp()|Could not open file to be modified (Path=\"{missing}\")",
         "errno 2|windows 2"},
        {[&](auto* e) {
             fail_next(Call::set_times);
             set_file_timestamp(file_, &time, nullptr, e);
         },
         "io|set_file_timestamp()|Could not set file time (Path=\"{file}\")", "errno 5"},
        {[&](auto* e) { query_file_size(missing_, e); },
         "io|query_file_size()|Can't determine the size of file '{missing}'", "errno 2"},
    });
    const auto error = error_of([&] { delete_file(missing_, nullptr); });
    const std::string* target = error->params().find("filePathDst");
    EXPECT_TRUE(target != nullptr && target->empty()) << "both parameters are set";
}

TEST_F(FailuresTest, OfTheSystemAlone) {
    fs::create_directory(dir_);
    support::check_failures({
        {[] {
             fail_next(Call::current_directory);
             get_current_directory_as_uri();
         },
         "error.qncore.errno|qnfile::get_current_directory_as_uri()"},
        {[] {
             fail_next(Call::application_path);
             get_application_filepath_as_uri();
         },
         "error.qncore.errno|qnfile::get_application_filepath_as_uri()"},
    });
    for (const std::string& path : {missing_, dir_}) {
        const auto error = error_of([&] { resolve_link(path, nullptr); });
        ASSERT_TRUE(error);
        EXPECT_EQ(error->location().function.view(), "qnfile::resolve_link");
        EXPECT_TRUE(qncore::ErrorCode("error.qncore").covers(error->code()) && !error->nested());
    }
}

TEST_F(FailuresTest, NamesWithAZeroAreRefusedBeforeAnythingIsDone) {
    const std::string zero("new\0x", 5);
    const std::string name = path(zero);
    const std::string below = name + "/below";
    std::int64_t time = 0;
    ErrorInfoPtr slot;
    const std::function<void()> actions[] = {
        [&] { FileWriteStream::create(name, create_always, share_none, flag_none); },
        [&] { DirectorySequence(name.data(), name.size(), &slot); },
        [&] { DirectoryEntry::create_from_full_path(name, &slot); },
        [&] { create_directory(name, mode, &slot, false); },
        [&] { create_directory(missing_ + "/" + zero, mode, &slot, true); },
        [&] { remove_directory(name, &slot); },
        [&] { remove_directory(name, remove_recursive, &slot); },
        [&] { impl::remove_win32_reparse_point(name, &slot); },
        [&] { set_current_directory(name, &slot); },
        [&] { is_accessible_directory(name, access_check_none, &slot); },
        [&] { copy_file(file_, name, false, &slot); },
        [&] { copy_file(name, missing_, false, &slot); },
        [&] { delete_file(name, &slot); },
        [&] { delete_file(uri_of("file:///new%00x"), nullptr); },
        [&] { get_file_timestamp(name, &time, nullptr, &slot); },
        [&] { set_file_timestamp(name, &time, nullptr, &slot); },
        [&] { query_file_size(name, &slot); },
        [&] { resolve_link(name, &slot); },
    };
    for (const auto& action : actions) {
        EXPECT_EQ(code_of(action), "error.qncore.embeddedNul") << &action - actions;
    }
    EXPECT_FALSE(slot || fs::exists(path("new")) || fs::exists(missing_));
}

} // namespace
} // namespace qnfile
