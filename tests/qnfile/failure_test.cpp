#include "platform/testing/testing.h"
#include "qnfile/file_impl.h"
#include "tests/qnfile/expected_failure.h"
#include "tests/support/temporary_directory.h"

namespace qnfile {
namespace {

using impl::FileImpl;
using platform::Call;

constexpr const char* constructor = "qnfile::impl::FileImpl::FileImpl()";

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

TEST_F(FailureTest, EveryFailureByItsCodeMessagePlaceAndCause) {
    const std::string missing = directory_.file("missing");
    const auto unknown = 7;
    FileImpl reader = opened(impl::access_read);
    FileImpl writer = opened(impl::access_write);
    const auto stream =
        FileReadWriteStream::create(name_, open_existing, share_read_write, flag_none);
    const auto write_stream =
        FileWriteStream::create(name_, open_existing, share_read_write, flag_none);
    char byte = 0;

    struct Case {
        std::function<void()> action;
        const char* code;
        std::string message;
        const char* function;
        bool has_cause;
    };
    const std::string quoted = "\"" + name_ + "\"";
    const auto short_write = [](qncore::IWriteStream& target) {
        platform::testing::fail_next(Call::write, platform::SystemError());
        target.write("abc", 3);
    };
    const Case cases[] = {
        {[&] {
             FileImpl(name_, static_cast<impl::FileAccessMode>(3), open_existing, share_none,
                      flag_none);
         },
         "error.qnfile.io.open", "Invalid access mode 3 to open file " + quoted, constructor,
         false},
        {[&] { FileReadStream::create(name_, static_cast<FileShareMode>(unknown), flag_none); },
         "error.qnfile.io.open", "Invalid share mode 7 to open file " + quoted, constructor, false},
        {[&] {
             FileWriteStream::create(name_, static_cast<FileCreationDisposition>(unknown),
                                     share_none, flag_none);
         },
         "error.qnfile.io.open", "Invalid creation disposition 7 to open file " + quoted,
         constructor, false},
        {[&] { FileReadStream::create(missing, share_none, flag_none); }, "error.qnfile.io.open",
         "Unable to open file \"" + missing + "\"", constructor, true},
        {[&] { writer.read(&byte, 1); }, "error.qnfile.io.read",
         "Error reading from file " + quoted, "qnfile::impl::FileImpl::read()", true},
        {[&] { reader.write(&byte, 1); }, "error.qnfile.io.write",
         "Writing to file " + quoted + " failed", "qnfile::impl::FileImpl::write()", true},
        {[&] { short_write(*write_stream); }, "error.qnfile.io.write",
         "Writing to file " + quoted + " failed, 3 bytes attempted, 2 bytes written",
         "qnfile::impl::FileWriteStreamImpl::write()", false},
        {[&] { short_write(*stream); }, "error.qnfile.io.write",
         "Writing to file " + quoted + " failed, 3 bytes attempted, 2 bytes written",
         "qnfile::impl::FileWriteStreamImpl::write()", false},
        {[&] { reader.resize(12); }, "error.qnfile.io.resize",
         "Resizing file " + quoted + " to 12 bytes failed", "qnfile::impl::FileImpl::resize()",
         true},
        {[&] {
             fail_next(Call::size);
             reader.size();
         },
         "error.qnfile.io.size", "Getting file size for file " + quoted + " failed",
         "qnfile::impl::FileImpl::size()", true},
        {[&] { reader.seek(-5, static_cast<qncore::SeekOrigin>(3)); },
         "error.qnfile.io.seek.badOrigin",
         "Invalid origin 3 in seek to offset -5 in file " + quoted + ".",
         "qnfile::impl::FileImpl::seek()", false},
        {[&] { reader.seek(-8, qncore::seek_end); }, "error.qnfile.io.seek",
         "Seeking to offset -8 from origin 2 in file " + quoted + " failed",
         "qnfile::impl::FileImpl::seek()", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        expect_failure(failure_of(c.action), {c.code, c.message, c.function, c.has_cause});
    }
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
