#include <functional>

#include "platform/testing/testing.h"
#include "qncore/error_exception.h"
#include "tests/qnfile/directory_fixture.h"

namespace qnfile {
namespace {

using platform::Call;
using qncore::ErrorInfoPtr;

constexpr auto device_error = platform::SystemError::posix(5);

class DirectoryFailureTest : public DirectoryFixture {
  protected:
    /// One step from the first entry, during which the call fails.
    void step_with_failure(Call call, ErrorInfoPtr* error) const {
        auto place = sequence("a").begin();
        platform::testing::fail_next(call, device_error);
        place.increment(error);
        EXPECT_EQ(place, DirectorySequence().end());
    }
    DirectorySequence::iterator end_ = DirectorySequence().end();
};

TEST_F(DirectoryFailureTest, ByCodeMessagePlaceAndCause) {
    make({"a", "gone", "there"});
    const std::string class_name = "qnfile::impl::DirectoryIteratorImplWin32::";
    const std::string base = base_ + "missing/";
    std::ostringstream end_address;
    end_address << static_cast<const void*>(&end_);
    struct Case {
        std::function<void(ErrorInfoPtr*)> action;
        const char* code;
        std::string message;
        const char* parameter;
        std::string value; ///< of the parameter; empty for a handle, which is any pointer
        std::string function;
        bool has_cause;
    };
    const Case cases[] = {
        {[&](ErrorInfoPtr* error) {
             EXPECT_FALSE(DirectorySequence(base.data(), base.size(), error));
         },
         "error.qnfile.directory.notFound",
         "Failed to open directory entry reader. Base path=\"{@basePath}\"", "basePath", base + "*",
         class_name + "DirectoryIteratorImplWin32()", true},
        {[&](ErrorInfoPtr* error) { step_with_failure(Call::read_directory, error); },
         "error.qnfile.directory.iterator", "Failed to read next directory entry. Handle={@handle}",
         "handle", "", class_name + "increment()", true},
        {[&](ErrorInfoPtr* error) { step_with_failure(Call::close_directory, error); },
         "error.qnfile.directory.iterator",
         "Failed to close directory entry reader. Handle={@handle}", "handle", "",
         class_name + "close()", true},
        {[&](ErrorInfoPtr* error) {
             auto first = sequence("gone|there").begin();
             auto second = first;
             ++first;
             std::filesystem::remove(path((*second).name()));
             second.increment(error);
             EXPECT_EQ(second, end_);
             make({"gone", "there"});
         },
         "error.qnfile.directory.iterator",
         "Could not restore iterator position after it had been copied. Current name={@name}",
         "name", (*sequence("gone|there").begin()).name(),
         "qnfile::impl::DirectoryEntryImplWin32::increment()", false},
        {[&](ErrorInfoPtr* error) { end_.increment(error); }, "error.qnfile.directory.iterator",
         "DirectoryIterator overrun. this={@this}", "this", end_address.str(),
         "qnfile::DirectorySequence::DirectoryIterator::increment()", false},
        {[&](ErrorInfoPtr* error) {
             EXPECT_FALSE(DirectoryEntry::create_from_full_path(base, error));
         },
         "error.qnfile.directory.notFound",
         "Failed to get directory entry stats. Full path=\"{@fullPath}\"", "fullPath",
         base_ + "missing", "qnfile::impl::DirectoryEntryImplWin32::create_from_full_path()", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.message);
        ErrorInfoPtr info;
        c.action(&info);
        EXPECT_THROW(c.action(nullptr), qncore::ErrorException) << "without a slot";
        ASSERT_TRUE(info);
        EXPECT_EQ(info->code().path(), c.code);
        EXPECT_EQ(info->message().view(), c.message);
        EXPECT_EQ(info->location().function.view(), c.function);
        const std::string* value = info->params().find(c.parameter);
        ASSERT_TRUE(value);
        if (c.value.empty()) {
            EXPECT_THAT(*value, testing::StartsWith("0x"));
            EXPECT_EQ(info->nested()->code().path(), "error.qncore.errno");
        } else {
            EXPECT_EQ(*value, c.value);
        }
        ASSERT_EQ(static_cast<bool>(info->nested()), c.has_cause);
        if (c.has_cause) {
            EXPECT_EQ(info->nested()->location().function.view(), c.function);
        }
    }
}

TEST_F(DirectoryFailureTest, AWalkGoesOnBehindWhatFails) {
    make({"a/", "a/x", "b/", "b/x", "c/", "c/x"});
    const std::pair<Call, int> cases[] = {
        {Call::open_directory, 2}, {Call::read_directory, 3}, {Call::close_directory, 3}};
    for (const auto& [call, entries] : cases) {
        for (const bool throwing : {false, true}) {
            SCOPED_TRACE(testing::Message() << static_cast<int>(call) << throwing);
            const DirectorySequence walk = sequence("a|b|c/x");
            ErrorInfoPtr error;
            auto place = walk.begin();
            platform::testing::fail_next(call, device_error);
            int count = 1;
            int thrown = 0;
            for (DirectoryEntry held = *place; place != end_; count += place != end_ ? 1 : 0) {
                held = *place; // so that each step is that of a copy
                try {
                    place.increment(throwing ? nullptr : &error);
                } catch (const qncore::ErrorException&) {
                    ++thrown;
                    --count;
                }
            }
            EXPECT_EQ(count, entries);
            EXPECT_EQ(thrown, throwing ? 1 : 0);
            EXPECT_NE(static_cast<bool>(error), throwing);
        }
    }
}

TEST_F(DirectoryFailureTest, AThrowLeavesAnIteratorOnItsEntryOrAtTheEnd) {
    make({"a/", "a/b/", "a/b/x", "a/c/", "a/c/x", "a/d/", "a/d/x"});
    const Names all = rest(sequence("a/b|c|d/x").begin());
    for (const Call call : {Call::open_directory, Call::read_directory, Call::close_directory}) {
        auto place = sequence("a/b|c|d/x").begin();
        platform::testing::fail_next(call, device_error);
        EXPECT_THROW(++place, qncore::ErrorException);
        EXPECT_EQ(relative(*place), all[0]);
        EXPECT_EQ(place->size(), 1U);
        const auto copy = place++;
        EXPECT_EQ(relative(*place), all[call == Call::open_directory ? 2 : 1]);
        EXPECT_EQ(rest(copy), all) << "a copy tries again";
    }
    auto place = sequence("**/x").begin();
    auto lost = place;
    ++place;
    std::filesystem::remove(lost->full_path());
    EXPECT_THROW(++lost, qncore::ErrorException);
    EXPECT_EQ(lost, end_);
}

} // namespace
} // namespace qnfile
