#include <cstring>
#include <sstream>
#include <tuple>

#include <gtest/gtest.h>

#include "qncore/base64.h"
#include "qncore/source_string.h"
#include "qncore/string_conversion.h"
#include "qncore/string_slice.h"
#include "qncore/utf8.h"

namespace qncore {
namespace {

TEST(SourceString, BorrowsOrOwns) {
    char text[] = "text";
    const SourceString borrowed(text, true);
    SourceString owned(text, false);
    SourceString borrowedCopy;
    SourceString ownedCopy;
    borrowedCopy = borrowed;
    ownedCopy = owned;
    std::strcpy(text, "next");
    EXPECT_EQ(borrowed.view(), "next");
    EXPECT_EQ(borrowedCopy.view().data(), text);
    EXPECT_STREQ(ownedCopy.view().data(), "text"); // a copy ends with a zero
    EXPECT_NE(ownedCopy.view().data(), owned.view().data());
    EXPECT_EQ(SourceString::borrow(std::string_view(text).substr(1, 2)).view(), "ex");
    for (const SourceString& empty : {SourceString::borrow({}), SourceString(nullptr)}) {
        EXPECT_STREQ(empty.view().data(), "");
        EXPECT_GT(owned.compare(empty), 0);
    }
    EXPECT_LT(owned.compare("u"), 0);
    const SourceString moved = std::move(owned);
    EXPECT_EQ(moved, "text");
    EXPECT_EQ(owned.view(), ""); // NOLINT(bugprone-use-after-move): moved-from texts are empty
    std::ostringstream stream;
    stream << moved << SourceString::copy_of(std::string_view("b\0c", 3));
    EXPECT_EQ(stream.str(), std::string("textb\0c", 7));
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
        {"SRV01", "srv01", 0}, {"a", "AB", -1},
        {"[", "{", -1},        {"@", "`", -1},
        {"Z", "[", 1},         {std::string("a\0b", 3), std::string("A\0C", 3), -1},
    };
    for (const auto& [left, right, sign] : cases) {
        const int order =
            compare_nocase_ascii(left.data(), left.size(), right.data(), right.size());
        EXPECT_EQ((order > 0) - (order < 0), sign) << left << " against " << right;
    }
}

TEST(Utf8, OnlyWholeValidSequencesAreRead) {
    const std::tuple<std::string, std::size_t, unsigned int> cases[] = {
        {"", 0, 0},
        {"a", 1, 'a'},
        {std::string("\0", 1), 1, 0},
        {"\xC3\xA4x", 2, 0xE4},
        {"\xEF\xBF\xBF", 3, 0xFFFF},
        {"\xF4\x8F\xBF\xBF", 4, 0x10FFFF},
        {"\xE2\x82", 0, 0},         // cut
        {"\x80", 0, 0},             // no lead byte
        {"\xC0\x80", 0, 0},         // overlong
        {"\xED\xA0\x80", 0, 0},     // surrogate
        {"\xF4\x90\x80\x80", 0, 0}, // beyond the last code point
        {"\xC3\x28", 0, 0},
    };
    for (const auto& [text, length, expected] : cases) {
        SCOPED_TRACE(testing::PrintToString(text));
        const std::vector<char> buffer(text.begin(), text.end()); // exactly: for the sanitizers
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
    for (int byte = 0; byte < 256; ++byte) {
        const int ones = std::countl_one(static_cast<unsigned char>(byte));
        const int length = ones == 0 ? 1 : ones == 1 || ones > 6 ? 0 : ones;
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

} // namespace
} // namespace qncore
