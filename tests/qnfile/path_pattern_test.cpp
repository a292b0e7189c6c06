#include "qnfile/path_pattern.h"

#include <gmock/gmock.h>

namespace qnfile {
namespace {

using Narrow = BasicPathPattern<char>;
using Wide = BasicPathPattern<wchar_t>;

TEST(PathPatternTest, CompilesTheFirstSegment) {
    // text, kind, length of the segment, whether more follow, whether recursive, the rest
    const std::tuple<const char*, PathPatternKind, std::size_t, bool, bool, const char*> cases[] = {
        {"", pattern_any, 0, false, false, ""},
        {"*", pattern_any, 1, false, false, "*"},
        {"**", pattern_any, 0, false, true, ""},
        {"**/*.TXT", pattern_suffix, 5, false, true, "*.txt"},
        {"**/**/x", pattern_wildcard, 2, true, true, "**/x"},
        {"**x", pattern_wildcard, 3, false, false, "**x"},
        {"a/b", pattern_exact, 1, true, false, "a/b"},
        {"a/*?|", pattern_exact, 1, true, false, "a/*?|"},
        {"/a/b", pattern_exact, 4, false, false, "/a/b"},
        {"a*", pattern_prefix, 2, false, false, "a*"},
        {"ab**", pattern_wildcard, 4, false, false, "ab**"},
        {"*a*", pattern_wildcard, 3, false, false, "*a*"},
        {"a|b", pattern_alternatives, 3, false, false, "a|b"},
    };
    for (const auto& [text, kind, length, more, recursive, rest] : cases) {
        SCOPED_TRACE(text);
        const Narrow pattern(text, false);
        EXPECT_EQ(std::tuple(pattern.kind(), pattern.segment_length(), pattern.has_more_segments(),
                             pattern.is_recursive(), pattern.text()),
                  std::tuple(kind, length, more, recursive, std::string(rest)));
    }
    const Narrow next = Narrow("**/A/B", true).next_segment();
    EXPECT_EQ(next.text(), "B");
    EXPECT_FALSE(next.is_recursive());
    EXPECT_TRUE(next.is_case_sensitive());
    EXPECT_TRUE(Narrow("a/**/b", true).next_segment().is_recursive());
}

TEST(PathPatternTest, Matches) {
    using Names = std::vector<std::string_view>;
    const std::tuple<const char*, Names, Names> cases[] = {
        // pattern, what it matches, what not
        {"", {"", "a"}, {}},
        {"FOO*", {"foo", "foobar", "FooBar"}, {"fo", "xfoo"}},
        {"*.Txt", {".txt", "a.TXT"}, {"txt", "a.txt.b"}},
        {"\xC3\xA4", {"\xC3\xA4"}, {"\xC3\x84"}},
        {"a|b", {"a", "B"}, {"a|b", "", "ab"}},
        {"|a", {"", "a"}, {"|"}},
        {"a|", {"a"}, {""}},
        {"|", {""}, {"|"}},
        {"x|*.c|?h", {"x", "a.c", ".c", "\xE2\x82\xACh"}, {"h", "a.d"}},
        {"?", {"a", "?", "\xE2\x82\xAC"}, {"", "ab", "\xE2\x82", "\x82", "\xFF"}},
        {"aZ", {"Az", "AZ"}, {"a{"}},
        {"*?", {"a", "ab"}, {"", "\xE2\x82\xAC"}}, // the first unit after a star is one byte
        // The scan ends at an invalid character.
        {"*a*", {"a", "xax", "\xC3\xA4-a"}, {"", "\xFF-a"}},
        {"*a*b*b", {"abb", "aab-b"}, {"ab"}},
        {"a/b", {"a"}, {"b", "a/b"}},
        {"/a/b", {"/a/b"}, {"a"}},
    };
    for (const auto& [text, names, others] : cases) {
        const Narrow pattern(text, false);
        for (const bool expected : {true, false}) {
            for (const std::string_view name : expected ? names : others) {
                const std::vector<char> exact(name.begin(), name.end()); // for the sanitizers
                EXPECT_EQ(pattern.matches(exact.data(), exact.size()), expected)
                    << text << " on " << name;
            }
        }
    }
    EXPECT_TRUE(Narrow("FOO*", true).matches("FOObar"));
    EXPECT_FALSE(Narrow("FOO*", true).matches("foobar"));
}

TEST(PathPatternTest, WideCharactersArePairsButForTheLastUnit) {
    const std::tuple<std::wstring, std::wstring, bool> cases[] = {
        {L"?", L"\xD83D\xDE00", true},    {L"??", L"\xD83D\xDE00", false},
        {L"?", L"\xD83D", false},         {L"?", L"\xDE00", false},
        {L"?", L"\xDFFE", false},         {L"?", L"\xDFFF", true},
        {L"?", L"\xD83D\xDFFF", false},   {L"*?", L"\xD83D\xDE00", false},
        {L"*??", L"\xD83D\xDE00", false}, {L"*a*", L"\xD83D\xDE00-A", true},
        {L"*a*", L"\xDE00-A", false},
    };
    for (const auto& [pattern, name, matches] : cases) {
        EXPECT_EQ(Wide(pattern, false).matches(name), matches)
            << testing::PrintToString(pattern) << " on " << testing::PrintToString(name);
    }
}

TEST(PathPatternTest, StarsAreLimitedAndCheap) {
    std::string text;
    std::string name;
    for (int runs = 1; runs <= 34; ++runs) {
        name += static_cast<char>('@' + runs);
        text += std::string("*") + name.back();
        for (const char* end : {"", "*", "**"}) {
            EXPECT_EQ(Narrow(text + end, true).matches(name), runs <= 32) << text << end;
        }
    }
    // Tried place by place these would not end in a lifetime.
    name.assign(255, 'a');
    for (const char* piece : {"*a", "*?", "*aa?"}) {
        text.clear();
        for (int i = 0; i < 31; ++i) {
            text += piece;
        }
        EXPECT_FALSE(Narrow(text + "*b", true).matches(name)) << piece;
        EXPECT_TRUE(Narrow(text + "*a*", true).matches(name)) << piece;
    }
    name.assign(100000, 'a');
    name += 'b';
    EXPECT_TRUE(Narrow("*a*b*", true).matches(name));
}

} // namespace
} // namespace qnfile
