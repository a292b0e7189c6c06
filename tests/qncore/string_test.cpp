#include <cstring>
#include <sstream>
#include <tuple>

#include <gtest/gtest.h>

#include "qncore/base64.h"
#include "qncore/source_string.h"
#include "qncore/streamers.h"
#include "qncore/string_conversion.h"
#include "qncore/string_slice.h"
#include "qncore/utf8.h"
#include "tests/support/exact_buffer.h"

namespace qncore {
namespace {

TEST(SourceString, BorrowsOrOwns) {
    char text[] = "text";
    const SourceString borrowed(text, true);
    const SourceString owned(text, false);
    SourceString borrowedCopy;
    SourceString ownedCopy;
    borrowedCopy = borrowed;
    ownedCopy = owned;
    std::strcpy(text, "next");
    EXPECT_EQ(borrowed.view(), "next");
    EXPECT_EQ(borrowedCopy.view().data(), text);
    EXPECT_EQ(owned.view(), "text");
    EXPECT_STREQ(ownedCopy.view().data(), "text"); // a copy ends with a zero
    EXPECT_NE(ownedCopy.view().data(), owned.view().data());
    const SourceString part = SourceString::borrow(std::string_view(text).substr(1, 2));
    EXPECT_EQ(part.view().data(), text + 1);
    EXPECT_EQ(part.view(), "ex");
    EXPECT_STREQ(SourceString::borrow({}).view().data(), "");
}

TEST(SourceString, ComparesAndMoves) {
    SourceString empty;
    EXPECT_STREQ(empty.view().data(), "");
    EXPECT_EQ(SourceString(nullptr).view(), "");
    SourceString owned = SourceString::copy_of("a");
    EXPECT_LT(owned.compare("b"), 0);
    EXPECT_GT(owned.compare(empty), 0);
    EXPECT_EQ(owned, "a");
    owned.swap(empty);
    EXPECT_EQ(empty, "a");
    const SourceString moved = std::move(empty);
    EXPECT_EQ(moved, "a");
    EXPECT_EQ(empty.view(), ""); // NOLINT(bugprone-use-after-move): moved-from texts are empty
    std::ostringstream stream;
    stream << moved << SourceString::copy_of(std::string_view("b\0c", 3));
    EXPECT_EQ(stream.str(), std::string("ab\0c", 4));
}

TEST(StringRange, SubrangesAndSlicesThatNeverPointAtNull) {
    constexpr std::size_t open = StringRange::npos;
    const StringRange whole(10, 5);
    EXPECT_EQ(whole.subrange(1, 2), StringRange(11, 2));
    EXPECT_EQ(whole.subrange(1, open), StringRange(11, 4));
    EXPECT_EQ(whole.subrange(9, 1), StringRange(15, 0));
    EXPECT_EQ(StringRange(10, open).subrange(1, open), StringRange(11, open));
    EXPECT_EQ(StringRange(10, open).last(14), StringRange(10, 4));
    EXPECT_EQ(StringRange(10, open).last(9), StringRange(10, 0));
    EXPECT_STREQ(StringSlice<const char*>().data(), "");
    EXPECT_EQ(StringSlice<const char*>(nullptr, 0, open).size(), 0U);
    EXPECT_EQ(StringSlice<const char*>("abcd", 1, open).view(), "bcd");
    EXPECT_EQ(StringSlice<const char*>("abcd", 1, 2).str(), "bc");
}

TEST(Conversion, WideAndNarrowTextAgree) {
    const std::pair<const char*, std::wstring> cases[] = {
        {"", L""},
        {"plain", L"plain"},
        {"\xC3\xA4\xE2\x82\xAC", L"\u00E4\u20AC"},
        {"\xF0\x9D\x84\x9E|", L"\U0001D11E|"},
        {"\xF0\x90\x8F\xBF", L"\U000103FF"},
        {"\xEF\xBB\xBF", L"\uFEFF"},
    };
    for (const auto& [narrow, wide] : cases) {
        EXPECT_EQ(to_wstring(narrow), wide) << narrow;
        EXPECT_EQ(to_string(wide), narrow);
        EXPECT_EQ(to_string(wide.c_str()), narrow);
    }
    EXPECT_EQ(to_wstring(std::string("a\0b", 3)), std::wstring(L"a\0b", 3));
    EXPECT_EQ(to_wstring("abc", 2), L"ab");
}

TEST(Conversion, OnlyAsciiLettersFold) {
    const std::tuple<std::string, std::string, int> cases[] = {
        {"SRV01", "srv01", 0},
        {"", "", 0},
        {"a", "", 1},
        {"a", "AB", -1},
        {"\xC3\x84", "\xC3\xA4", -1},
        {"[", "{", -1},
        {"@", "`", -1},
        {"Z", "[", 1},
        {std::string("a\0b", 3), std::string("A\0C", 3), -1},
    };
    for (const auto& [left, right, sign] : cases) {
        const int order =
            compare_nocase_ascii(left.data(), left.size(), right.data(), right.size());
        EXPECT_EQ((order > 0) - (order < 0), sign) << left << " against " << right;
        EXPECT_EQ(to_lower_ascii(left) == to_lower_ascii(right), sign == 0);
    }
}

TEST(Utf8, OnlyWholeValidSequencesAreRead) {
    const std::tuple<std::string, std::size_t, unsigned int> cases[] = {
        {"", 0, 0},
        {"a", 1, 'a'},
        {std::string("\0", 1), 1, 0},
        {"\xC3\xA4x", 2, 0xE4},
        {"\xEF\xBB\xBF", 3, 0xFEFF},
        {"\xEF\xBF\xBF", 3, 0xFFFF},
        {"\xF4\x8F\xBF\xBF", 4, 0x10FFFF},
        {"\xC3", 0, 0},             // cut
        {"\xE2\x82", 0, 0},         // cut
        {"\x80", 0, 0},             // no lead byte
        {"\xC0\x80", 0, 0},         // overlong
        {"\xE0\x80\x80", 0, 0},     // overlong
        {"\xED\xA0\x80", 0, 0},     // surrogate
        {"\xF4\x90\x80\x80", 0, 0}, // beyond the last code point
        {"\xF8\x88\x80\x80\x80", 0, 0},
        {"\xC3\x28", 0, 0},
    };
    for (const auto& [text, length, expected] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        const support::ExactBuffer buffer(text);
        unsigned int codePoint = 0;
        EXPECT_EQ(utf8_to_ucs4_char(buffer.data(), buffer.size(), &codePoint), length);
        EXPECT_EQ(utf8_to_ucs4_char(buffer.data(), buffer.size(), nullptr), length);
        EXPECT_EQ(codePoint, expected);
        if (length != 0) {
            char bytes[4];
            EXPECT_EQ(ucs4_char_to_utf8(codePoint, bytes, bytes + 4), length);
            EXPECT_EQ(std::memcmp(bytes, buffer.data(), length), 0);
            EXPECT_EQ(ucs4_char_to_utf8(codePoint, bytes, bytes + length - 1), 0U);
        }
    }
    for (const unsigned int refused : {0xD800U, 0xDFFFU, 0x110000U, 0xFFFFFFFFU}) {
        char bytes[8];
        EXPECT_EQ(ucs4_char_to_utf8(refused, bytes, bytes + 8), 0U) << refused;
    }
}

TEST(Utf8, LengthComesFromTheLeadByte) {
    const std::pair<int, std::size_t> cases[] = {
        {0x00, 1}, {0x7F, 1}, {0x80, 0}, {0xBF, 0}, {0xC0, 2}, {0xDF, 2}, {0xE0, 3}, {0xEF, 3},
        {0xF0, 4}, {0xF7, 4}, {0xF8, 5}, {0xFB, 5}, {0xFC, 6}, {0xFD, 6}, {0xFE, 0}, {0xFF, 0}};
    for (const auto& [byte, length] : cases) {
        EXPECT_EQ(utf8_sequence_length(static_cast<char>(byte)), length) << byte;
    }
}

TEST(Base64, VectorsOfRfc4648) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},        {"f", "Zg=="},          {"fo", "Zm8="},
        {"foo", "Zm9v"}, {"foobar", "Zm9vYmFy"}, {"\xFB\xFF\xBF", "+/+/"}};
    for (const auto& [text, padded] : cases) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
        std::string all = ">";
        append_base64(all, bytes, text.size(), true);
        EXPECT_EQ(all, ">" + padded);
        append_base64(all, bytes, text.size(), false);
        EXPECT_EQ(all, ">" + padded + padded.substr(0, padded.find('=')));
    }
}

TEST(Hex, WritesAtLeastTheDigitsAskedFor) {
    std::ostringstream stream;
    stream << streamers::Hex(0) << ' ' << streamers::Hex(0x1C880005) << ' '
           << streamers::Hex(0xA, 4) << ' ' << 10;
    EXPECT_EQ(stream.str(), "0 1c880005 000a 10");
}

} // namespace
} // namespace qncore
