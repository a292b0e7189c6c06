#include <cerrno>
#include <stdexcept>

#include <gmock/gmock.h>

#include "qncore/embedded_nul.h"
#include "qncore/error_composer.h"
#include "qncore/errors.h"
#include "qncore/safe_cast.h"
#include "qncore/streamers.h"
#include "qncore/utf8.h"
#include "tests/support/failure.h"
#include "tests/support/trace_capture.h"

namespace qncore {
namespace {

using support::error_of;

constinit const ErrorCode branch{"error.test"};
constinit const ErrorCode leaf{"error.test.leaf_code"};
constinit const ErrorCode sibling{"error.test.leaf"};

const SourceLocation here = QN_LOCATION("f()");

enum class Colour { red = 7 };

TEST(Errors, RenderingReplacesEveryPlaceholderThatHasAValue) {
    const std::pair<const char*, const char*> cases[] = {
        {"plain {} {a} {@} {@n}", "plain {} {a} {@} -5"},
        {"{@u}{@n} and {@u}", "18446744073709551615-5 and 18446744073709551615"},
        {"{@e} {@h} {@z} {@s}", "7 0abc 0 a{@n}b"},
        {"DataSize: {@n}, MaxDataSize: {@maxData})", "DataSize: -5, MaxDataSize: {@maxData})"},
        {"{@nobraces} {@n", "{@nobraces} {@n"},
        {"{@{@n}}", "{@{@n}}"},
    };
    for (const auto& [message, text] : cases) {
        const auto info = ErrorComposer(message)
                              .param("n", -5LL)
                              .param("u", ~std::size_t{0})
                              .param("e", Colour::red)
                              .param("h", streamers::Hex(0xABC, 4))
                              .param("z", streamers::Hex(0))
                              .param("s", std::string("a{@n}b"))
                              .create(leaf, {});
        EXPECT_EQ(info->text(), text) << message;
    }
}

TEST(Errors, AnExceptionMatchesWholeSegmentsAndCarriesItsRecord) {
    const ErrorException exception(ErrorComposer("x").create(leaf, {}));
    EXPECT_TRUE(exception.matches(leaf));
    EXPECT_TRUE(exception.matches(branch));
    EXPECT_FALSE(exception.matches(sibling));
    EXPECT_EQ(error_of([&] { exception.rethrow(); }), exception.info());
    EXPECT_EQ(ErrorInfo::from_exception(exception, here), exception.info());
    EXPECT_EQ(ErrorInfo::from_exception(std::runtime_error("words"), here)->text(), "words");
}

TEST(Errors, OfTheCoreItself) {
    const std::string truncated =
        "error.qncore.safeCast|qncore::impl::safe_cast_throw_value_truncated()|The value ";
    support::check_failures({
        {[] { (void)safe_cast<int>(std::size_t{1} << 32); },
         truncated + "4294967296 is too large for the type i"},
        // The image of this value differs from it, so truncation is found first.
        {[] { (void)safe_cast<int>(0x80000000U); },
         truncated + "2147483648 is too large for the type i"},
        {[] { (void)safe_cast<long long>(~std::size_t{0}); },
         "error.qncore.safeCast|qncore::impl::safe_cast_throw_sign_reversal()|The value "
         "18446744073709551615 turns negative in the type x"},
        {[] { check_no_embedded_nul(std::string("a\0b", 3)); },
         "error.qncore.embeddedNul|qncore::impl::raise_embedded_nul_error()"},
        {[] { check_valid_utf8("ab\xFF", 3); }, "error.qncore.encoding|qncore::check_valid_utf8()|"
                                                "Invalid UTF-8 sequence at byte 2"},
        {[] { to_string(std::wstring(L"a\xD800")); },
         "error.qncore.encoding|qncore::to_string()|"
         "The wide text holds no code point at position 1"},
        {[] { throw_error(leaf, "a", ErrorParams(), here); }, "error.test.leaf_code|f()|a"},
        {[] { throw_error(leaf, SourceString("b"), here); }, "error.test.leaf_code|f()|b"},
        {[] { throw_errno(here, EEXIST); }, "error.qncore.errno|f()|File exists (errno 17)"},
        {[] { throw_winerror(here, 5, false); }, "error.qncore.windows|f()|Windows error 5"},
        {[](ErrorInfoPtr* slot) {
             ErrorComposer("c").create_transfer_with_nested_winerror(slot, leaf, here, 5, true);
         },
         "error.test.leaf_code|f()|c", "windows 5"},
        {[] {
             const auto error = platform::SystemError::posix(EEXIST);
             ErrorComposer("d").throw_with_nested_system_error(leaf, here, error);
         },
         "error.test.leaf_code|f()|d", "errno 17"},
        {[] { ErrorComposer("g").throw_with_nested_winerror(leaf, here, 5, false); },
         "error.test.leaf_code|f()|g", "windows 5"},
        {[] { ErrorComposer("h").throw_with_nested_errno(leaf, here, EEXIST); },
         "error.test.leaf_code|f()|h", "errno 17"},
        {[] {
             const std::runtime_error error("words");
             ErrorComposer("f").throw_with_nested_exception(leaf, here, error);
         },
         "error.test.leaf_code|f()|f", "error.qncore.exception"},
        {[](ErrorInfoPtr* slot) {
             const auto cause = ErrorComposer("x").create(branch, here);
             ErrorComposer("e").create_transfer(slot, leaf, here, cause);
         },
         "error.test.leaf_code|f()|e", "error.test"},
    });
    EXPECT_EQ(safe_cast<int>(0x7FFFFFFFU), 0x7FFFFFFF);
}

TEST(Errors, ASlotTakesTheLastFailureAndAThrowIsTraced) {
    const support::TraceCapture capture("System=11");
    const auto fail = [](ErrorInfoPtr* slot, const char* what) {
        ErrorComposer("broken {@what}")
            .param("what", what)
            .create_transfer_with_nested_errno(slot, leaf, QN_LOCATION("some::function()"), ENOENT);
    };
    ErrorInfoPtr slot;
    fail(&slot, "door");
    const ErrorInfoPtr first = slot;
    fail(&slot, "pipe");
    EXPECT_EQ(first->text(), "broken door");
    EXPECT_EQ(error_of([&] { fail(nullptr, "pipe"); })->chain_text(), slot->chain_text());
    EXPECT_THAT(capture.lines(),
                testing::ElementsAre(testing::EndsWith(
                    " 11 System some::function() Error Message: broken pipe; cause: No such file "
                    "or directory (errno 2) [error.test.leaf_code]")));
}

} // namespace
} // namespace qncore
