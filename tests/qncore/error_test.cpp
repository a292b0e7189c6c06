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

enum class Colour { red = 7 };

TEST(Errors, RenderingReplacesEveryPlaceholderThatHasAValue) {
    const std::pair<const char*, const char*> cases[] = {
        {"", ""},
        {"plain", "plain"},
        {"{@a}{@b} and {@a}", "12 and 1"},
        {"DataSize: {@a}, MaxDataSize: {@maxData})", "DataSize: 1, MaxDataSize: {@maxData})"},
        {"{@nobraces} {@a", "{@nobraces} {@a"},
        {"{} {a} {@} {@b}", "{} {a} {@} 2"},
        {"{@{@a}}", "{@{@a}}"},
    };
    for (const auto& [message, text] : cases) {
        const auto info = ErrorComposer(message).param("a", 1).param("b", "2").create(leaf, {});
        EXPECT_EQ(info->text(), text) << message;
        EXPECT_EQ(info->message().view(), message);
    }
}

TEST(Errors, ParametersBecomeText) {
    const auto info = ErrorComposer("{@n} {@u} {@e} {@h} {@s}")
                          .param("n", -5LL)
                          .param("u", ~std::size_t{0})
                          .param("e", Colour::red)
                          .param("h", streamers::Hex(0xABC))
                          .param("s", std::string("a{@n}b"))
                          .create(leaf, {});
    EXPECT_EQ(info->text(), "-5 18446744073709551615 7 abc a{@n}b");
    EXPECT_EQ(*info->params().find("e"), "7");
    EXPECT_EQ(info->params().find("missing"), nullptr);
}

TEST(Errors, AnExceptionMatchesWholeSegmentsAndRethrowsItsRecord) {
    const ErrorException exception(ErrorComposer("x").create(leaf, {}));
    EXPECT_TRUE(exception.matches(leaf));
    EXPECT_TRUE(exception.matches(branch));
    EXPECT_TRUE(exception.matches(error::error));
    EXPECT_FALSE(exception.matches(sibling));
    EXPECT_FALSE(exception.matches(error::qncore));
    EXPECT_EQ(error_of([&] { exception.rethrow(); }), exception.info());
}

TEST(Errors, ASlotTakesTheLastFailureAndNoSlotThrows) {
    const SourceLocation location = QN_LOCATION("here()");
    ErrorInfoPtr slot;
    ErrorComposer("first").create_transfer(&slot, leaf, location);
    const ErrorInfoPtr first = slot;
    ErrorComposer("second").create_transfer_with_nested_errno(&slot, leaf, location, EACCES);
    EXPECT_EQ(first->text(), "first");
    EXPECT_EQ(slot->text(), "second");
    EXPECT_EQ(slot->nested()->code(), error::qncore_errno);
    EXPECT_EQ(slot->location().function.view(), "here()");
    EXPECT_EQ(error_of([&] {
                  ErrorComposer("x").create_transfer(nullptr, leaf, location, slot);
              })->nested(),
              slot);
}

TEST(Errors, CausesAreNested) {
    const SourceLocation location = QN_LOCATION("here()");
    const auto carried = ErrorComposer("carried").create(leaf, location);
    const std::tuple<ErrorInfoPtr, ErrorCode, const char*> cases[] = {
        {ErrorInfo::from_errno(location, ENOENT), error::qncore_errno,
         "No such file or directory (errno 2)"},
        {ErrorInfo::from_winerror(location, 5, false), error::qncore_windows, "Windows error 5"},
        {ErrorInfo::from_exception(std::runtime_error("words"), location), error::qncore_exception,
         "words"},
        {ErrorInfo::from_exception(ErrorException(carried), location), leaf, "carried"},
        {ErrorInfo::from_system_error(location, platform::SystemError::posix(EEXIST)),
         error::qncore_errno, "File exists (errno 17)"},
    };
    for (const auto& [cause, code, text] : cases) {
        EXPECT_EQ(cause->code(), code) << text;
        EXPECT_EQ(cause->text(), text);
        EXPECT_FALSE(cause->nested());
    }
    const auto outer = ErrorComposer("outer").create(leaf, location, std::get<0>(cases[0]));
    EXPECT_EQ(outer->chain_text(), "outer; cause: No such file or directory (errno 2)");
    EXPECT_EQ(error_of([&] {
                  ErrorComposer("m").throw_with_nested_exception(leaf, location,
                                                                 std::runtime_error("words"));
              })->chain_text(),
              "m; cause: words");
}

TEST(Errors, OfTheCoreItself) {
    const std::string truncated =
        "error.qncore.safeCast|qncore::impl::safe_cast_throw_value_truncated()|The value ";
    support::check_failures({
        {[] { (void)safe_cast<int>(std::size_t{1} << 32); },
         truncated + "4294967296 is too large for the type i"},
        {[] { (void)safe_cast<unsigned>(std::size_t{1} << 32); },
         truncated + "4294967296 is too large for the type j"},
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
        {[] { throw_error(leaf, "a", ErrorParams(), QN_LOCATION("f()")); },
         "error.test.leaf_code|f()|a"},
        {[] { throw_error(leaf, SourceString("b"), QN_LOCATION("f()")); },
         "error.test.leaf_code|f()|b"},
        {[] { throw_errno(QN_LOCATION("f()"), ENOENT); }, "error.qncore.errno|f()"},
        {[] { throw_winerror(QN_LOCATION("f()"), 5, false); },
         "error.qncore.windows|f()|Windows error 5"},
        {[](ErrorInfoPtr* slot) {
             ErrorComposer("c").create_transfer_with_nested_winerror(slot, leaf, QN_LOCATION("f()"),
                                                                     5, true);
         },
         "error.test.leaf_code|f()|c", "system"},
    });
    EXPECT_EQ(safe_cast<int>(0x7FFFFFFFU), 0x7FFFFFFF);
}

TEST(Errors, AThrowIsTracedAndAFilledSlotIsNot) {
    const support::TraceCapture capture("System=11");
    const auto fail = [](ErrorInfoPtr* slot) {
        ErrorComposer("broken {@what}")
            .param("what", "pipe")
            .create_transfer_with_nested_errno(slot, leaf, QN_LOCATION("some::function()"), ENOENT);
    };
    ErrorInfoPtr slot;
    fail(&slot);
    EXPECT_TRUE(slot);
    EXPECT_EQ(error_of([&] { fail(nullptr); })->text(), slot->text());
    EXPECT_THAT(capture.lines(),
                testing::ElementsAre(testing::EndsWith(
                    " 11 System some::function() Error Message: broken pipe; cause: No such file "
                    "or directory (errno 2) [error.test.leaf_code]")));
}

} // namespace
} // namespace qncore
