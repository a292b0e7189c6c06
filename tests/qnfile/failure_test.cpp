#include "platform/testing/testing.h"
#include "qnfile/file_impl.h"
#include "tests/qnfile/expected_failure.h"
#include "tests/support/temporary_directory.h"

namespace qnfile {
namespace {

using impl::FileImpl;
using platform::Call;

class FailureTest : public ::testing::Test {
  protected:
    FailureTest() { support::write_file(name_, "content"); }

    FileImpl opened(impl::FileAccessMode access) const {
        return {name_, access, open_existing, share_read_write, flag_none};
    }
    /// The next call fails as a full device would let it.
    static void fail_next(Call call) {
        platform::testing::fail_next(call, platform::SystemError::posix(ENOSPC));
    }

    support::TemporaryDirectory directory_;
    std::string name_ = directory_.file("file");
};

TEST_F(FailureTest, EveryFailureByItsCodePlaceMessageAndCause) {
    const std::string missing = directory_.file("missing");
    FileImpl reader = opened(impl::access_read);
    FileImpl writer = opened(impl::access_write);
    const auto stream =
        FileReadWriteStream::create(name_, open_existing, share_read_write, flag_none);
    const auto write_stream =
        FileWriteStream::create(name_, open_existing, share_read_write, flag_none);
    char byte = 0;
    const auto short_write = [](qncore::IWriteStream& target) {
        platform::testing::fail_next(Call::write, platform::SystemError());
        target.write("abc", 3);
    };
    const std::string quoted = "\"" + name_ + "\"";
    const std::string io = "error.qnfile.io.";
    const std::string at = "|qnfile::impl::FileImpl::";
    const std::string open = io + "open" + at + "FileImpl()|";
    const std::string short_report =
        io + "write|qnfile::impl::FileWriteStreamImpl::write()|Writing to file " + quoted +
        " failed, 3 bytes attempted, 2 bytes written";
    check_failures({
        {[&](auto*) {
             const auto access = static_cast<impl::FileAccessMode>(3);
             FileImpl(name_, access, open_existing, share_none, flag_none);
         },
         open + "Invalid access mode 3 to open file " + quoted, false},
        {[&](auto*) { FileReadStream::create(name_, static_cast<FileShareMode>(7), flag_none); },
         open + "Invalid share mode 7 to open file " + quoted, false},
        {[&](auto*) {
             const auto disposition = static_cast<FileCreationDisposition>(7);
             FileWriteStream::create(name_, disposition, share_none, flag_none);
         },
         open + "Invalid creation disposition 7 to open file " + quoted, false},
        {[&](auto*) { FileReadStream::create(missing, share_none, flag_none); },
         open + "Unable to open file \"" + missing + "\""},
        {[&](auto*) { writer.read(&byte, 1); },
         io + "read" + at + "read()|Error reading from file " + quoted},
        {[&](auto*) { reader.write(&byte, 1); },
         io + "write" + at + "write()|Writing to file " + quoted + " failed"},
        {[&](auto*) { short_write(*write_stream); }, short_report, false},
        {[&](auto*) { short_write(*stream); }, short_report, false},
        {[&](auto*) { reader.resize(12); },
         io + "resize" + at + "resize()|Resizing file " + quoted + " to 12 bytes failed"},
        {[&](auto*) {
             fail_next(Call::size);
             reader.size();
         },
         io + "size" + at + "size()|Getting file size for file " + quoted + " failed"},
        {[&](auto*) { reader.seek(-5, static_cast<qncore::SeekOrigin>(3)); },
         io + "seek.badOrigin" + at + "seek()|Invalid origin 3 in seek to offset -5 in file " +
             quoted + ".",
         false},
        {[&](auto*) { reader.seek(-8, qncore::seek_end); },
         io + "seek" + at + "seek()|Seeking to offset -8 from origin 2 in file " + quoted +
             " failed"},
    });
}

TEST_F(FailureTest, AFileStaysUsableAfterAFailure) {
    FileImpl file = opened(impl::access_read_write);
    EXPECT_TRUE(failure_of([&] { file.seek(-1, qncore::seek_begin); }));
    fail_next(Call::set_end);
    EXPECT_TRUE(failure_of([&] { file.resize(5); }));
    EXPECT_EQ(file.seek(0, qncore::seek_current), 5U) << "where the resize broke off";
    for (const Call call : {Call::read, Call::write}) {
        fail_next(call);
        char byte = 'x';
        EXPECT_TRUE(
            failure_of([&] { call == Call::read ? file.read(&byte, 1) : file.write(&byte, 1); }));
    }
    platform::testing::fail_next(Call::write, platform::SystemError());
    EXPECT_TRUE(failure_of([&] { file.write_all("NT.", 3); }));
    EXPECT_EQ(support::read_file(name_), "conteNT") << "the part that was written stays";
    EXPECT_EQ(file.seek(0, qncore::seek_current), 7U);
}

TEST_F(FailureTest, TransfersBeyond32BitsAreRefusedWhole) {
    const auto stream =
        FileReadWriteStream::create(name_, open_existing, share_read_write, flag_none);
    char byte = 'x';
    for (const std::uint64_t count : {std::uint64_t{1} << 32, ~std::uint64_t{0}}) {
        for (const auto& info : {failure_of([&] { stream->read(&byte, count); }),
                                 failure_of([&] { stream->write(&byte, count); })}) {
            EXPECT_EQ(info->code().path(), "error.qncore.safeCast");
        }
    }
    EXPECT_EQ(stream->seek(0, qncore::seek_current), 0U);
    EXPECT_EQ(support::read_file(name_), "content");
    // The largest is passed on, so it is the system that refuses.
    FileImpl writer = opened(impl::access_write);
    const auto info = failure_of([&] { writer.read(&byte, 0xFFFFFFFF); });
    EXPECT_EQ(info->code().path(), "error.qnfile.io.read");
}

TEST_F(FailureTest, ANameWithAZeroOpensNothing) {
    const std::string name = directory_.file(std::string("new\0x", 5));
    for (const auto disposition : {create_new, create_always, open_always}) {
        const auto info =
            failure_of([&] { FileWriteStream::create(name, disposition, share_none, flag_none); });
        EXPECT_EQ(info->code().path(), "error.qncore.embeddedNul");
    }
    EXPECT_FALSE(std::filesystem::exists(directory_.file("new")));
}

} // namespace
} // namespace qnfile
