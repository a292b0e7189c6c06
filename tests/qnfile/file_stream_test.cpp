#include "qnfile/file_stream.h"

#include <array>
#include <future>
#include <type_traits>
#include <vector>

#include "qnfile/file_impl.h"
#include "qnfile/file_stream_impl.h"
#include "qnfile/read_stream_view.h"
#include "tests/qnfile/file_fixture.h"

namespace qnfile {
namespace {

using qncore::seek_begin;
using qncore::seek_current;
using qncore::seek_end;

// The object of a read-write stream passes for a seekable stream of either direction.
static_assert(
    std::is_convertible_v<impl::FileReadWriteStreamImpl*, qncore::ISeekableReadStream*> &&
    std::is_convertible_v<impl::FileReadWriteStreamImpl*, qncore::ISeekableWriteStream*> &&
    std::is_convertible_v<impl::FileReadWriteStreamImpl*, qncore::ISeekableReadWriteStream*>);

class FileStreamTest : public FileFixture {
  protected:
    FileStreamTest() { support::write_file(name_, "0123456789"); }

    qncore::RefCountPtr<FileReadWriteStream> both() const {
        return FileReadWriteStream::create(name_, open_existing, share_read_write,
                                           flag_random_access | flag_write_through);
    }
    std::string open_code(FileShareMode share) const {
        return code_of([&] { FileReadStream::create(name_, share, flag_none); });
    }

    std::string name_ = path("stream \xE2\x82\xAC");
};

TEST_F(FileStreamTest, WhatIsWrittenIsRead) {
    {
        const auto stream = FileWriteStream::create(name_, create_always, share_none, flag_none);
        EXPECT_EQ(stream->filename(), name_);
        EXPECT_EQ(stream->write("abc", 3), 3U);
        EXPECT_EQ(stream->write("abc", 0), 0U);
        EXPECT_EQ(stream->write("de", 2), 2U);
        EXPECT_EQ(stream->size(), 5U);
    }
    // Unknown flags count as clear.
    const auto stream =
        FileReadStream::create(name_, share_read_write, static_cast<FileOpenFlags>(0xFFFFFFF1U));
    char text[8] = {};
    EXPECT_EQ(stream->available(), 5U);
    EXPECT_EQ(stream->read(text, 1), 1U);
    EXPECT_EQ(stream->read(text + 1, 7), 4U);
    EXPECT_STREQ(text, "abcde");
    EXPECT_EQ(stream->read(text, 1), 0U) << "the end is no error";
    EXPECT_EQ(stream->available(), 0U);
}

TEST_F(FileStreamTest, SkipStopsAtTheEndButGoesOnBeyondIt) {
    // from, count, skipped
    const std::array<std::uint64_t, 3> cases[] = {
        {0, 4, 4},  {0, 10, 10}, {4, 100, 6}, {10, 3, 0}, {0, ~std::uint64_t{0}, 10},
        {12, 3, 3}, {12, 0, 0},
    };
    const auto stream = both();
    for (const auto& [from, count, skipped] : cases) {
        SCOPED_TRACE(::testing::Message() << from << " + " << count);
        EXPECT_EQ(stream->seek(static_cast<std::int64_t>(from) - 10, seek_end), from);
        EXPECT_EQ(stream->skip(count), skipped);
        EXPECT_EQ(stream->seek(0, seek_current), from + skipped);
        EXPECT_EQ(stream->available(), 10 - from - skipped) << "wraps beyond the end";
    }
}

TEST_F(FileStreamTest, ResizeKeepsAPositionInsideTheNewEnd) {
    // position, new size, position after
    const std::array<std::uint64_t, 3> cases[] = {{2, 5, 2},  {7, 5, 5},    {5, 5, 5},
                                                  {3, 20, 3}, {15, 12, 12}, {15, 20, 15},
                                                  {0, 0, 0},  {10, 10, 10}};
    for (const auto& [position, bytes, position_after] : cases) {
        SCOPED_TRACE(::testing::Message() << position << " -> " << bytes);
        support::write_file(name_, "0123456789");
        const auto stream = both();
        stream->seek(static_cast<std::int64_t>(position), seek_begin);
        stream->resize(bytes);
        EXPECT_EQ(stream->seek(0, seek_current), position_after);
        EXPECT_EQ(stream->size(), bytes);
        std::string expected = "0123456789";
        expected.resize(bytes);
        EXPECT_EQ(support::read_file(name_), expected);
    }
}

TEST_F(FileStreamTest, DispositionsAndShareModesAreTheSystems) {
    const auto create = [](const std::string& name, FileCreationDisposition how) {
        return code_of([&] { FileWriteStream::create(name, how, share_none, flag_none); });
    };
    // disposition, whether it opens an existing file, the content then, whether it creates one
    const std::tuple<FileCreationDisposition, bool, const char*, bool> cases[] = {
        {create_new, false, "0123456789", true},
        {create_always, true, "", true},
        {open_always, true, "0123456789", true},
        {open_existing, true, "0123456789", false},
        {truncate_existing, true, "", false}};
    for (const auto& [disposition, opens, content, creates] : cases) {
        SCOPED_TRACE(disposition);
        support::write_file(name_, "0123456789");
        fs::remove(missing_);
        EXPECT_EQ(create(name_, disposition), opens ? "" : "error.qnfile.io.open");
        EXPECT_EQ(support::read_file(name_), content);
        EXPECT_EQ(create(missing_, disposition), creates ? "" : "error.qnfile.io.open");
        EXPECT_EQ(fs::exists(missing_), creates);
    }
    {
        auto writer = FileWriteStream::create(name_, open_existing, share_read_write, flag_none);
        const auto other_reference = writer;
        writer.reset();
        EXPECT_EQ(open_code(share_read), "error.qnfile.io.open") << "there is a writer";
        EXPECT_EQ(open_code(share_write), "");
    }
    const auto alone = FileReadStream::create(name_, share_none, flag_none);
    EXPECT_NE(open_code(share_read_write), "") << "the last reference closed the file";
}

TEST_F(FileStreamTest, AFileStaysUsableAfterAFailure) {
    impl::FileImpl file(name_, impl::access_read_write, open_existing, share_read_write, flag_none);
    constexpr auto disk_full = platform::SystemError::posix(28);
    char byte = 'x';
    EXPECT_NE(code_of([&] { file.seek(-1, seek_begin); }), "");
    platform::testing::fail_next(Call::set_end, disk_full);
    EXPECT_NE(code_of([&] { file.resize(8); }), "");
    EXPECT_EQ(file.seek(0, seek_current), 8U) << "where the resize failed";
    platform::testing::fail_next(Call::read, disk_full);
    EXPECT_NE(code_of([&] { file.read(&byte, 1); }), "");
    platform::testing::fail_next(Call::write, {});
    EXPECT_NE(code_of([&] { file.write_all("AB.", 3); }), "");
    EXPECT_EQ(file.seek(0, seek_current), 10U);
    constexpr std::uint64_t too_much = std::uint64_t{1} << 32;
    EXPECT_EQ(code_of([&] { file.read(&byte, too_much); }), "error.qncore.safeCast");
    EXPECT_EQ(code_of([&] { file.write(&byte, too_much); }), "error.qncore.safeCast");
    EXPECT_EQ(support::read_file(name_), "01234567AB") << "the part that was written stays";
    impl::FileImpl writer(name_, impl::access_write, open_existing, share_read_write, flag_none);
    EXPECT_EQ(code_of([&] { writer.read(&byte, 0xFFFFFFFF); }), "error.qnfile.io.read")
        << "the largest count is passed on";
}

using View = qncore::ISeekableReadStreamView;
using ViewPtr = qncore::RefCountPtr<View>;

class ReadStreamViewTest : public FileFixture {
  protected:
    ReadStreamViewTest() { support::write_file(file_, "0123456789"); }

    ViewPtr root() const { return FileReadStreamView::create(file_, share_read_write, flag_none); }
    static std::string rest_of(View& view) {
        std::string text(64, '\0');
        text.resize(view.read(text.data(), text.size()));
        return text;
    }
};

TEST_F(ReadStreamViewTest, ATreeOfViewsLivesAsLongAsItsLastView) {
    ViewPtr leaf;
    {
        const auto root = FileReadStreamView::create(file_, share_none, flag_none);
        EXPECT_EQ(root->filename(), file_);
        EXPECT_FALSE(root->parent());
        EXPECT_EQ(root->root().get(), root.get());
        EXPECT_EQ(root->offset_in_file() + root->offset_in_parent(), 0U);
        const ViewPtr child = root->create_view(2, 7);
        leaf = child->create_view(3);
        EXPECT_EQ(leaf->parent(), child);
        EXPECT_EQ(child->parent()->parent(), nullptr);
    }
    EXPECT_EQ(leaf->offset_in_parent(), 3U);
    EXPECT_EQ(leaf->offset_in_file(), 5U);
    EXPECT_EQ(leaf->size(), 4U);
    EXPECT_EQ(rest_of(*leaf), "5678") << "stops at its own end";
    EXPECT_EQ(leaf->available(), 0U);
    EXPECT_EQ(rest_of(*leaf->parent()), "2345678") << "has a position of its own";
    EXPECT_EQ(rest_of(*leaf->root()), "0123456789");
    const auto& base = dynamic_cast<const FileStreamBase&>(*leaf);
    EXPECT_EQ(base.filename(), file_);
    EXPECT_NE(base.handle(), platform::invalid_file);
    EXPECT_NE(code_of([&] { FileReadStream::create(file_, share_none, flag_none); }), "");
    leaf.reset();
    EXPECT_EQ(code_of([&] { FileReadStream::create(file_, share_none, flag_none); }), "");
}

TEST_F(ReadStreamViewTest, MovesAreClampedAndWrapBelowTheFile) {
    using Case = std::tuple<std::int64_t, qncore::SeekOrigin, std::uint64_t, std::uint64_t>;
    // A view of the bytes 3 to 7, positioned at its second byte: the move, the position after it,
    // how many of 2 bytes can be skipped then.
    const Case cases[] = {
        {3, seek_begin, 3, 2},    {5, seek_begin, 5, 0},   {-3, seek_begin, 0, 2},
        {-4, seek_begin, 5, 0},   {2, seek_current, 3, 2}, {-4, seek_current, 0, 2},
        {-5, seek_current, 5, 0}, {-1, seek_end, 4, 1},    {-8, seek_end, 0, 2},
        {-9, seek_end, 5, 0},     {1, seek_end, 5, 0},     {INT64_MIN, seek_begin, 5, 0},
    };
    const ViewPtr view = root()->create_view(3, 5);
    for (const auto& [offset, origin, position, skipped] : cases) {
        SCOPED_TRACE(::testing::Message() << offset << " from " << origin);
        EXPECT_EQ(view->seek(1, seek_begin), 1U);
        EXPECT_EQ(view->seek(offset, origin), position);
        EXPECT_EQ(view->available(), 5 - position);
        EXPECT_EQ(view->skip(2), skipped);
        EXPECT_EQ(view->seek(0, seek_current), position + skipped);
    }
    view->seek(0, seek_begin);
    EXPECT_EQ(view->skip(~std::uint64_t{0}), 5U);
}

TEST_F(ReadStreamViewTest, RangesEndWithTheFileAsItIsNow) {
    const ViewPtr root = this->root();
    const ViewPtr child = root->create_view(2, 6);
    EXPECT_EQ(root->create_view(10, 0)->size() + child->create_view(6, 0)->size(), 0U);
    // The sum wraps around to one that fits: required.
    EXPECT_EQ(root->create_view(1, ~std::uint64_t{0})->size(), ~std::uint64_t{0});
    EXPECT_EQ(child->create_view(2, ~std::uint64_t{1})->size(), ~std::uint64_t{1});
    support::write_file(file_, "0123456789 and more");
    EXPECT_EQ(root->size(), 19U);
    EXPECT_EQ(root->available(), 10U);
    EXPECT_EQ(rest_of(*root), "0123456789") << "reads what was there when it was opened";
    EXPECT_EQ(rest_of(*root->create_view(15)), "more");
}

TEST_F(ReadStreamViewTest, ALongChainIsReleased) {
    ViewPtr leaf = root();
    for (int i = 0; i < 300'000; ++i) {
        leaf = leaf->create_view(0);
    }
    const ViewPtr middle = leaf->parent()->parent();
    leaf.reset();
    EXPECT_EQ(rest_of(*middle), "0123456789");
}

TEST_F(ReadStreamViewTest, ViewsOfOneFileReadFromManyThreads) {
    const ViewPtr root = this->root();
    std::vector<std::future<void>> readers;
    for (std::size_t start = 0; start < 8; ++start) {
        readers.push_back(std::async(std::launch::async, [&root, start] {
            for (int turn = 0; turn < 1000; ++turn) {
                EXPECT_EQ(rest_of(*root->create_view(start)), &"0123456789"[start]);
            }
        }));
    }
}

} // namespace
} // namespace qnfile
