// Path patterns, in both forms, against the definition of the wildcard match. The input is a byte
// of switches, then the pattern and the name, separated by a newline.

#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/plain_glob.h"
#include "fuzz/require.h"
#include "qnfile/path_pattern.h"

namespace {

/// The definition takes exponential time.
constexpr std::size_t longest_compared = 14;

/// What the compiled kinds say of the same texts by definition.
template <class View>
bool matches_by_definition(qnfile::PathPatternKind kind, View segment, View name,
                           bool caseSensitive) {
    const auto glob = [&](View piece) { return fuzz::plain_glob(name, piece, caseSensitive); };
    if (kind == qnfile::pattern_any) {
        return true;
    }
    for (; kind == qnfile::pattern_alternatives && !segment.empty();) {
        const std::size_t end = segment.find('|');
        if (glob(segment.substr(0, end))) {
            return true;
        }
        segment.remove_prefix(end == View::npos ? segment.size() : end + 1);
    }
    return kind != qnfile::pattern_alternatives && glob(segment);
}

template <class Unit>
void check(const std::basic_string<Unit>& text, const std::basic_string<Unit>& name,
           bool caseSensitive) {
    using View = std::basic_string_view<Unit>;
    qnfile::BasicPathPattern<Unit> pattern(text, caseSensitive);
    for (;;) {
        const View segment = View(pattern.text()).substr(0, pattern.segment_length());
        const bool matches = pattern.matches(name);
        // Prefixes and suffixes are compared as they stand, where a search ends at an invalid
        // character; so a search may only say less.
        if (segment.size() <= longest_compared && name.size() <= longest_compared) {
            const bool expected =
                matches_by_definition<View>(pattern.kind(), segment, name, caseSensitive);
            fuzz::require(matches == expected ||
                              (matches && pattern.kind() == qnfile::pattern_suffix),
                          "the definition gives the same answer");
        }
        if (!pattern.has_more_segments()) {
            return;
        }
        fuzz::require(pattern.text().at(pattern.segment_length()) == Unit{'/'},
                      "a slash follows the segment");
        pattern = pattern.next_segment();
    }
}

/// Bytes as units: surrogates stand for the bytes from 0xE0 on.
std::wstring widened(std::string_view text) {
    constexpr wchar_t surrogates[] = {0xD800, 0xD83D, 0xDBFF, 0xDC00,
                                      0xDE00, 0xDFFE, 0xDFFF, 0xE000};
    std::wstring wide;
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        wide += byte >= 0xE0 ? surrogates[byte % 8] : static_cast<wchar_t>(byte);
    }
    return wide;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) {
        return 0;
    }
    const bool caseSensitive = (data[0] & 1) != 0;
    const std::string text(data + 1, data + size);
    const std::size_t split = text.find('\n');
    const std::string pattern = text.substr(0, split);
    const std::string name = split == std::string::npos ? std::string() : text.substr(split + 1);
    check(pattern, name, caseSensitive);
    check(widened(pattern), widened(name), caseSensitive);
    return 0;
}
