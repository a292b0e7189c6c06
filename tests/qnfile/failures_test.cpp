#include "platform/path.h"
#include "qnfile/directory.h"
#include "qnfile/file_impl.h"
#include "qnfile/file_utilities.h"
#include "qnfile/read_stream_view.h"
#include "tests/qnfile/file_fixture.h"

namespace qnfile {
namespace {

using impl::FileImpl;

constexpr int mode = 7;
constexpr auto device_error = platform::SystemError::posix(5);

/// A value that the enumeration does not have.
template <class Enumeration>
constexpr auto unknown = static_cast<Enumeration>(9);

/// A row of a table of failures: the action, "code|function" without "error.qnfile." and
/// "qnfile::", the part of the text that has the parameters, and the cause, as "linux|windows" if
/// the two differ.
struct Row : support::FailureCase {
    template <class Action>
    Row(Action does, const std::string& place, const std::string& text = "",
        const std::string& nested = "")
        : FailureCase(std::move(does), "error.qnfile." + place, nested) {
        report.insert(report.find('|') + 1, "qnfile::");
        if (const std::size_t bar = cause.find('|'); bar != std::string::npos) {
            platform::paths_have_drives ? cause.erase(0, bar + 1) : cause.erase(bar);
        }
        action = [text, inner = std::move(action)](Slot slot) {
            const ErrorInfoPtr thrown = error_of([&] { inner(slot); });
            const ErrorInfoPtr error = slot != nullptr ? *slot : thrown;
            EXPECT_THAT(error ? error->text() : "", testing::HasSubstr(text));
            if (thrown) {
                qncore::throw_error(thrown);
            }
        };
    }
    /// The next call of that kind fails, and that is the cause.
    template <class Action>
    Row(Action does, const std::string& place, const std::string& text, Call call)
        : Row(std::move(does), place, text, "errno 5") {
        action = [call, inner = std::move(action)](Slot slot) {
            platform::testing::fail_next(call, device_error);
            inner(slot);
        };
    }
};

void check(const std::vector<Row>& rows) {
    support::check_failures({rows.begin(), rows.end()});
}

class FailuresTest : public FileFixture {
  protected:
    FailuresTest() { support::write_file(file_, "content"); }

    /// Moves on from the only entry while the call fails.
    void step(Call call, ErrorInfoPtr* error) const {
        auto place = sequence("file").begin();
        platform::testing::fail_next(call, device_error);
        place.increment(error);
    }

    std::string dir_ = path("dir");
};

TEST_F(FailuresTest, OfStreams) {
    FileImpl reader(file_, impl::access_read, open_existing, share_read_write, flag_none);
    FileImpl writer(file_, impl::access_write, open_existing, share_read_write, flag_none);
    char byte = 0;
    const auto open = [&](auto access, auto disposition, auto share) {
        FileImpl(file_, access, disposition, share, flag_none);
    };
    const auto output = FileWriteStream::create(file_, open_existing, share_read_write, flag_none);
    const auto both =
        FileReadWriteStream::create(file_, open_existing, share_read_write, flag_none);
    const auto write_short = [](auto& stream) {
        platform::testing::fail_next(Call::write, {});
        stream.write("abc", 3);
    };
    const std::string short_write = file_ + "\" failed, 3 bytes attempted, 2 bytes written";
    check({
        {[&] { open(unknown<impl::FileAccessMode>, open_existing, share_none); },
         "io.open|impl::FileImpl::FileImpl()", "access mode 9 to open file \"" + file_},
        {[&] { open(impl::access_read, open_existing, unknown<FileShareMode>); },
         "io.open|impl::FileImpl::FileImpl()", "share mode 9 to open file \"" + file_},
        {[&] { open(impl::access_read, unknown<FileCreationDisposition>, share_none); },
         "io.open|impl::FileImpl::FileImpl()", "creation disposition 9 to open file \"" + file_},
        {[&] { FileReadStream::create(missing_, share_none, flag_none); },
         "io.open|impl::FileImpl::FileImpl()", missing_, "errno 2|windows 2"},
        {[&] { writer.read(&byte, 1); }, "io.read|impl::FileImpl::read()", file_,
         "errno 9|windows 5"},
        {[&] { reader.write(&byte, 1); }, "io.write|impl::FileImpl::write()", file_,
         "errno 9|windows 5"},
        {[&] { write_short(*output); }, "io.write|impl::FileWriteStreamImpl::write()", short_write},
        // The same function for the other class: required.
        {[&] { write_short(*both); }, "io.write|impl::FileWriteStreamImpl::write()", short_write},
        {[&] { reader.resize(12); }, "io.resize|impl::FileImpl::resize()",
         file_ + "\" to 12 bytes failed", "system"},
        {[&] { reader.size(); }, "io.size|impl::FileImpl::size()", file_, Call::size},
        {[&] { reader.seek(-5, unknown<qncore::SeekOrigin>); },
         "io.seek.badOrigin|impl::FileImpl::seek()",
         "origin 9 in seek to offset -5 in file \"" + file_},
        {[&] { reader.seek(-8, qncore::seek_end); }, "io.seek|impl::FileImpl::seek()",
         "offset -8 from origin 2 in file \"" + file_, "errno 22|windows 131"},
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
         "io.view.badRange|impl::FileReadStreamViewImpl:ReadStreamViewImpl::ReadStreamViewImpl()",
         "(3,4) for file \"" + file_ + "\" with size 5."},
        {[&] { root->create_view(6); },
         "io.view.badRange|impl::FileReadStreamViewImpl:RootView::create_view()",
         "(6,18446744073709551615) for root view of \"" + file_ + "\" with view size 5."},
        {[&] { child->create_view(2, 4); },
         "io.view.badRange|impl::FileReadStreamViewImpl::create_view()",
         "(2,4) for view of \"" + file_ + "\" with view size 5."},
        {[&] { child->seek(-5, unknown<qncore::SeekOrigin>); },
         "io.seek.badOrigin|impl::FileReadViewFactoryImpl:FileReadView::seek()",
         "origin 9 in seek to offset -5 in file \"" + file_},
        {[&] { later->read(&byte, 1); }, "io.read|impl::FileImpl::read()", file_,
         "errno 61|windows 38"},
    });
    EXPECT_EQ(later->seek(0, qncore::seek_current), 1U) << "a failed read moves nothing";
}

TEST_F(FailuresTest, OfWalks) {
    auto end = DirectorySequence().end();
    DirectorySequence::iterator lost;
    check({
        {[&](auto* e) { EXPECT_FALSE(sequence("", e, "missing/")); },
         "directory.notFound|impl::DirectoryIteratorImplWin32::DirectoryIteratorImplWin32()",
         base_ + "missing/*\"", "errno 2|windows 3"},
        {[&](auto* e) { step(Call::read_directory, e); },
         "directory.iterator|impl::DirectoryIteratorImplWin32::increment()", "Handle=0x",
         "errno 5"},
        {[&](auto* e) { step(Call::close_directory, e); },
         "directory.iterator|impl::DirectoryIteratorImplWin32::close()", "Handle=0x", "errno 5"},
        {[&](auto* e) {
             make({"gone"});
             auto first = sequence("gone|file").begin();
             first = first->name() == "gone" ? first : ++first;
             lost = first++;
             fs::remove(path("gone"));
             lost.increment(e);
         },
         "directory.iterator|impl::DirectoryEntryImplWin32::increment()", "name=gone"},
        {[&](auto* e) { end.increment(e); },
         "directory.iterator|DirectorySequence::DirectoryIterator::increment()",
         "overrun. this=0x"},
        {[&](auto* e) { EXPECT_FALSE(DirectoryEntry::create_from_full_path(missing_ + "/", e)); },
         "directory.notFound|impl::DirectoryEntryImplWin32::create_from_full_path()",
         missing_ + "\"", "errno 2|windows 2"},
    });
    EXPECT_EQ(lost, end);
}

TEST_F(FailuresTest, OfDirectories) {
    make({"dir/sub/", "dir/sub/file1", "dir/sub/file2", "closed/"});
    fs::permissions(path("closed"), fs::perms::owner_read);
    const std::string closed = platform::paths_have_drives ? "Z:\\proc" : path("closed");
    const std::string odd = platform::paths_have_drives ? path("a|b") : path(std::string(300, 'x'));
    const auto accessible = [&](const std::string& path, DirectoryAccessFlags flags) {
        return [path, flags] {
            ErrorInfoPtr error;
            EXPECT_FALSE(is_accessible_directory(path, flags, nullptr)) << "never throws";
            EXPECT_FALSE(is_accessible_directory(path, flags, &error));
            qncore::throw_error(error);
        };
    };
    check({
        {[&](auto* e) { create_directory(dir_, mode, e, false); },
         "directory.alreadyExists|create_directory()", dir_ + "\" Access mode=7",
         "errno 17|windows 183"},
        {[&](auto* e) { create_directory(missing_ + "/x", mode, e, false); },
         "directory|create_directory()", missing_ + "/x\" Access mode=7))", "errno 2|windows 3"},
        {[&](auto* e) { create_directory(file_ + "/x/y", mode, e, true); },
         "directory|create_directory()", file_, "errno 20|windows 3"},
        {[&](auto* e) { create_directory(odd + "/x", mode, e, true); },
         "directory.notFound|impl::create_directory_recursive()", odd + "\"",
         "errno 36|windows 123"},
        {[&](auto* e) { impl::create_directory_recursive(missing_ + "/x", mode, e, -1); },
         "directory|impl::create_directory_recursive()", "", "errno 7"},
        {[&](auto* e) { remove_directory(dir_, e); }, "directory|remove_directory()", dir_,
         "errno 39|windows 145"},
        {[&](auto* e) { remove_directory(dir_, remove_empty_only, e); },
         "directory|remove_directory()", dir_, "errno 39|windows 145"},
        {[&](auto* e) { impl::remove_directory_tree(dir_, remove_recursive, -1, e); },
         "directory|remove_directory()", "", "errno 7"},
        {[&](auto* e) {
             remove_directory(dir_, remove_recursive, e);
             EXPECT_TRUE(fs::exists(dir_ + "/sub/file1") && fs::exists(dir_ + "/sub/file2"));
         },
         "directory|remove_directory()", "(path=" + base_ + "dir/sub/file", Call::remove_file},
        {[&](auto* e) { remove_directory(dir_, remove_recursive, e); },
         "directory.notFound|impl::DirectoryIteratorImplWin32::DirectoryIteratorImplWin32()",
         base_ + "dir", Call::open_directory},
        {[&](auto* e) { impl::remove_win32_reparse_point(missing_, e); },
         "directory|impl::remove_win32_reparse_point()",
         "open file for reparse point removal. Path=\"" + missing_, "errno 2|windows 2"},
        {[&](auto* e) { impl::remove_win32_reparse_point(dir_, e); },
         "directory|impl::remove_win32_reparse_point()", "get reparse point data. Path=\"" + dir_,
         "system"},
        {[&](auto* e) { impl::remove_win32_reparse_point(dir_, e); },
         "directory|impl::remove_win32_reparse_point()", "remove reparse point. Path=\"" + dir_,
         Call::remove_link},
        {[&](auto* e) { impl::remove_win32_reparse_point(dir_, e); },
         "directory|impl::remove_win32_reparse_point()",
         "after removing reparse point. Base path=\"" + dir_, Call::remove_linked_directory},
        {[&](auto* e) { set_current_directory(missing_, e); }, "directory|set_current_directory()",
         missing_, "errno 2|windows 2"},
        {[&](auto* e) { EXPECT_EQ(get_current_directory(e), ""); },
         "directory|get_current_directory()", "bufSize=260", Call::current_directory},
        {accessible(missing_, access_check_none), "directory.notFound|is_accessible_directory()",
         missing_, "errno 2|windows 2"},
        {accessible(file_, access_check_write), "directory.notDirectory|is_accessible_directory()",
         file_},
        {accessible(closed, access_check_write | access_check_hidden),
         "directory.access.notWrite|is_accessible_directory()", closed},
        {accessible(dir_, access_check_hidden),
         "directory.access.notHidden|is_accessible_directory()", dir_},
    });
    EXPECT_TRUE(is_accessible_directory(dir_, access_check_write, nullptr));
    EXPECT_TRUE(is_accessible_directory(closed, access_check_read, nullptr));
}

TEST_F(FailuresTest, OfFileUtilities) {
    std::int64_t time = 0;
    check({
        {[&](auto* e) { filename_from_uri(uri_of("file:///a{b"), e); },
         "filename.uri|filename_from_uri()", "file:///a{b", "errno 22"},
        {[&](auto* e) { query_file_size(qnuri::Uri(), e); }, "filename.uri|filename_from_uri()", "",
         "errno 22"},
        {[&](auto* e) { delete_file(uri_of("http://host/x"), e); },
         "filename.uri|filename_from_uri()", "must have 'file:' scheme: http://host/x", "errno 22"},
        {[&](auto* e) { filename_from_uri(uri_of("file:"), e); },
         "filename.uri|filename_from_uri()", "path for a 'file:' scheme URI: file:", "errno 22"},
        {[&](auto* e) { copy_file(missing_, dir_, false, e); }, "io|copy_file()",
         "(PathSrc=\"" + missing_ + "\" PathDst=\"" + dir_ + "\")", "errno 2|windows 2"},
        {[&](auto* e) { copy_file(file_, file_, true, e); }, "io|copy_file()", file_,
         "errno 17|windows 80"},
        {[&](auto* e) { delete_file(missing_, e); }, "io|delete_file()",
         "(Path=\"" + missing_ + "\")", "errno 2|windows 2"},
        {[&](auto* e) { delete_file(file_ + "/", e); }, "io|delete_file()", file_, "system"},
        {[&](auto* e) { get_file_timestamp(missing_, &time, nullptr, e); },
         "io|get_file_timestamp()", missing_, "errno 2|windows 2"},
        {[&](auto* e) { set_file_timestamp(missing_, &time, nullptr, e); },
         "io|set_file_timestamp()", "open file to be modified (Path=\"" + missing_,
         "errno 2|windows 2"},
        {[&](auto* e) { set_file_timestamp(file_, &time, nullptr, e); }, "io|set_file_timestamp()",
         "set file time (Path=\"" + file_, Call::set_times},
        {[&](auto* e) { EXPECT_EQ(query_file_size(missing_, e), 0U); }, "io|query_file_size()",
         missing_, "errno 2"},
    });
}

TEST_F(FailuresTest, OfTheSystemAlone) {
    const std::string code = platform::paths_have_drives ? "windows" : "errno";
    support::check_failures({
        {[] {
             platform::testing::fail_next(Call::current_directory, device_error);
             get_current_directory_as_uri();
         },
         "error.qncore.errno|qnfile::get_current_directory_as_uri()"},
        {[] {
             platform::testing::fail_next(Call::application_path, device_error);
             get_application_filepath_as_uri();
         },
         "error.qncore.errno|qnfile::get_application_filepath_as_uri()"},
        {[&](auto* e) { EXPECT_EQ(resolve_link(missing_, e), ""); },
         "error.qncore." + code + "|qnfile::resolve_link"},
    });
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
