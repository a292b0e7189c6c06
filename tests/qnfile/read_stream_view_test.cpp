#include "qnfile/read_stream_view.h"

#include <thread>
#include <vector>

#include "qncore/interface_ptr.h"
#include "tests/qnfile/file_fixture.h"

namespace qnfile {
namespace {

using qncore::seek_begin;
using qncore::seek_current;
using qncore::seek_end;
using View = qncore::ISeekableReadStreamView;
using ViewPtr = qncore::RefCountPtr<View>;

constexpr std::uint64_t largest = ~std::uint64_t{0};

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
    EXPECT_EQ(rest_of(*leaf), "");
    EXPECT_EQ(rest_of(*leaf->parent()), "2345678") << "has a position of its own";
    EXPECT_EQ(rest_of(*leaf->root()), "0123456789");
    const auto& base = dynamic_cast<const FileStreamBase&>(*leaf);
    EXPECT_EQ(base.filename(), file_);
    EXPECT_NE(base.handle(), platform::invalid_file);

    using Stream = qncore::InterfacePtr<qncore::IReadStream, qncore::AtomicHolder>;
    const Stream stream(leaf.get(), qncore::AtomicHolder(&leaf->counted()));
    EXPECT_NE(code_of([&] { FileReadStream::create(file_, share_none, flag_none); }), "");
    leaf.reset();
    EXPECT_EQ(stream->skip(1), 0U) << "the stream keeps the view";
}

TEST_F(ReadStreamViewTest, MovesAreClampedAndWrapBelowTheFile) {
    using Case = std::tuple<std::int64_t, qncore::SeekOrigin, std::uint64_t, std::uint64_t>;
    // A view of the bytes 3 to 7 that stands on its second byte: the move, the position after it,
    // how many of 2 bytes can be skipped then.
    const Case cases[] = {
        {0, seek_begin, 0, 2},         {3, seek_begin, 3, 2},    {5, seek_begin, 5, 0},
        {9, seek_begin, 5, 0},         {-2, seek_begin, 0, 2},   {-3, seek_begin, 0, 2},
        {-4, seek_begin, 5, 0},        {2, seek_current, 3, 2},  {-1, seek_current, 0, 2},
        {-4, seek_current, 0, 2},      {-5, seek_current, 5, 0}, {-1, seek_end, 4, 1},
        {-8, seek_end, 0, 2},          {-9, seek_end, 5, 0},     {1, seek_end, 5, 0},
        {INT64_MIN, seek_begin, 5, 0},
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
    EXPECT_EQ(view->skip(largest), 5U);
}

TEST_F(ReadStreamViewTest, RangesUpToTheEndFit) {
    const ViewPtr root = this->root();
    const ViewPtr child = root->create_view(2, 6);
    EXPECT_EQ(root->create_view(10, 0)->size() + child->create_view(6, 0)->size(), 0U);
    // The sum wraps around to one that fits: required.
    EXPECT_EQ(root->create_view(1, largest)->size(), largest);
    EXPECT_EQ(child->create_view(2, largest - 1)->size(), largest - 1);
}

TEST_F(ReadStreamViewTest, ARootReadsWhatItSawButGivesViewsOfWhatIsThere) {
    support::write_file(file_, "");
    const ViewPtr empty = root();
    support::write_file(file_, "grown");
    EXPECT_EQ(empty->size(), 5U);
    EXPECT_EQ(empty->available(), 0U);
    EXPECT_EQ(rest_of(*empty), "");
    EXPECT_EQ(rest_of(*empty->create_view(1)), "rown");
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
    std::string bytes(1 << 16, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 31 + i / 251);
    }
    support::write_file(file_, bytes);
    const ViewPtr root = this->root();
    std::vector<std::thread> readers;
    for (std::size_t reader = 0; reader < 8; ++reader) {
        readers.emplace_back([&, reader] {
            const std::size_t start = reader * 4099;
            const ViewPtr view = root->create_view(start);
            std::string read;
            for (std::string piece(1021, '\0'); view->available() != 0;) {
                read.append(piece.data(), view->read(piece.data(), piece.size()));
            }
            EXPECT_EQ(read, bytes.substr(start)) << reader;
        });
    }
    for (std::thread& reader : readers) {
        reader.join();
    }
}

} // namespace
} // namespace qnfile
