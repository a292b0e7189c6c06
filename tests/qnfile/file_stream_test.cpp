#include "qnfile/file_stream.h"

#include <string>
#include <type_traits>

#include <gmock/gmock.h>

#include "qncore/error_exception.h"
#include "qnfile/file_stream_impl.h"
#include "tests/support/temporary_directory.h"

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

class FileStreamTest : public ::testing::Test {
  protected:
    FileStreamTest() { support::write_file(name_, "0123456789"); }

    qncore::RefCountPtr<FileReadStream> reader() const {
        // unknown bits count as clear
        return FileReadStream::create(name_, share_read_write,
                                      static_cast<FileOpenFlags>(0xFFFFFFF1U));
    }
    qncore::RefCountPtr<FileReadWriteStream> both() const {
        return FileReadWriteStream::create(name_, open_existing, share_read_write,
                                           flag_random_access);
    }
    bool opens(FileShareMode share) const {
        try {
            FileReadStream::create(name_, share, flag_none);
            return true;
        } catch (const qncore::ErrorException&) {
            return false;
        }
    }

    support::TemporaryDirectory directory_;
    std::string name_ = directory_.file("stream \xE2\x82\xAC");
};

TEST_F(FileStreamTest, WhatIsWrittenIsRead) {
    std::string bytes(70000, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 7);
    }
    {
        const auto stream =
            FileWriteStream::create(name_, create_always, share_none, flag_write_through);
        EXPECT_EQ(stream->filename(), name_);
        EXPECT_NE(stream->handle(), platform::invalid_file);
        EXPECT_EQ(stream->write(bytes.data(), 65536), 65536U);
        EXPECT_EQ(stream->write(bytes.data(), 0), 0U);
        EXPECT_EQ(stream->write(bytes.data() + 65536, bytes.size() - 65536), bytes.size() - 65536);
        EXPECT_EQ(stream->size(), bytes.size());
    }
    const auto stream = reader();
    std::string read(bytes.size() + 1, 'x');
    EXPECT_EQ(stream->available(), bytes.size());
    EXPECT_EQ(stream->read(read.data(), 1), 1U);
    EXPECT_EQ(stream->read(read.data() + 1, read.size()), bytes.size() - 1);
    read.pop_back();
    EXPECT_EQ(read, bytes);
    EXPECT_EQ(stream->read(read.data(), 1), 0U) << "the end is no error";
    EXPECT_EQ(stream->available(), 0U);
}

TEST_F(FileStreamTest, SkipStopsAtTheEndButGoesOnBeyondIt) {
    struct Case {
        std::uint64_t from;
        std::uint64_t count;
        std::uint64_t skipped;
    };
    const Case cases[] = {
        {0, 4, 4},  {0, 10, 10}, {4, 100, 6}, {10, 3, 0}, {0, ~std::uint64_t{0}, 10},
        {12, 3, 3}, {12, 0, 0},
    };
    const auto read_stream = reader();
    const auto stream = both();
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.from << " + " << c.count);
        const auto from = static_cast<std::int64_t>(c.from);
        EXPECT_EQ(read_stream->seek(from, seek_begin), c.from);
        EXPECT_EQ(read_stream->skip(c.count), c.skipped);
        EXPECT_EQ(read_stream->seek(0, seek_current), c.from + c.skipped);
        EXPECT_EQ(read_stream->available(), 10 - c.from - c.skipped) << "wraps beyond the end";
        stream->seek(from, seek_begin);
        EXPECT_EQ(stream->skip(c.count), c.skipped);
        EXPECT_EQ(stream->available(), 10 - c.from - c.skipped);
    }
}

TEST_F(FileStreamTest, Seek) {
    const auto stream = both();
    EXPECT_EQ(stream->seek(3, seek_begin), 3U);
    EXPECT_EQ(stream->seek(-2, seek_current), 1U);
    EXPECT_EQ(stream->seek(-1, seek_end), 9U);
    EXPECT_EQ(stream->seek(5, seek_end), 15U);
    EXPECT_EQ(stream->write("x", 1), 1U);
    EXPECT_EQ(support::read_file(name_), std::string("0123456789\0\0\0\0\0x", 16));
}

TEST_F(FileStreamTest, ResizeKeepsAPositionInsideTheNewEnd) {
    struct Case {
        std::uint64_t position;
        std::uint64_t bytes;
        std::uint64_t position_after;
    };
    const Case cases[] = {{2, 5, 2},    {7, 5, 5},    {5, 5, 5}, {3, 20, 3},
                          {15, 12, 12}, {15, 20, 15}, {0, 0, 0}, {10, 10, 10}};
    for (const Case& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.position << " -> " << c.bytes);
        support::write_file(name_, "0123456789");
        const auto check = [&](auto& stream) {
            stream.seek(static_cast<std::int64_t>(c.position), seek_begin);
            stream.resize(c.bytes);
            EXPECT_EQ(stream.seek(0, seek_current), c.position_after);
            EXPECT_EQ(stream.size(), c.bytes);
        };
        check(*both());
        check(*FileWriteStream::create(name_, open_existing, share_none, flag_none));
        std::string expected = "0123456789";
        expected.resize(c.bytes);
        EXPECT_EQ(support::read_file(name_), expected);
    }
}

TEST_F(FileStreamTest, StreamsExcludeEachOther) {
    {
        const auto alone = FileReadStream::create(name_, share_none, flag_none);
        EXPECT_FALSE(opens(share_read_write)) << "a reader alone excludes readers";
    }
    {
        auto writer = FileWriteStream::create(name_, open_existing, share_read_write, flag_none);
        const auto other_reference = writer;
        writer.reset();
        EXPECT_EQ(other_reference->size(), 10U);
        EXPECT_TRUE(opens(share_write));
        EXPECT_FALSE(opens(share_read)) << "there is a writer";
        EXPECT_THROW(FileWriteStream::create(name_, create_always, share_none, flag_none),
                     qncore::ErrorException);
    }
    EXPECT_EQ(support::read_file(name_), "0123456789") << "the refused open emptied nothing";
    EXPECT_TRUE(opens(share_none)) << "the last reference closed the file";
}

} // namespace
} // namespace qnfile
