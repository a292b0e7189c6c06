#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/directory.h"

namespace qnfile {

/// The kind of the first segment of a pattern; only the last two need a search.
enum PathPatternKind : std::uint32_t {
    pattern_any = 0,          ///< `*`, or an empty pattern
    pattern_prefix = 1,       ///< literal text with one `*` at its end
    pattern_suffix = 2,       ///< `*` and literal text
    pattern_exact = 3,        ///< literal text
    pattern_wildcard = 4,     ///< anything else with `*` or `?`
    pattern_alternatives = 5, ///< wildcard patterns separated by `|`
};

/// A pattern for paths: segments separated by `/`, in which `*` matches any text and `?` one whole
/// character, after an optional leading `**` segment that matches any depth. The first segment is
/// compiled and tested against names; next_segment() serves the level below. If case does not
/// matter, A to Z match a to z; other letters match in the same case only.
///
/// A match takes at most time in the product of both lengths. If more than 32 runs of stars have
/// something after them, a segment matches nothing. The narrow form works on UTF-8 bytes, the wide
/// form on UTF-16 units.
template <class Unit>
class BasicPathPattern {
  public:
    using String = std::basic_string<Unit>;
    using View = std::basic_string_view<Unit>;

    /// The empty pattern, which matches everything on one level.
    BasicPathPattern() = default;
    BasicPathPattern(String text, bool caseSensitive);

    PathPatternKind kind() const noexcept { return kind_; }
    /// Length of the first segment in units.
    std::size_t segment_length() const noexcept { return segment_length_; }
    bool has_more_segments() const noexcept { return has_more_segments_; }
    /// True if a leading `**` was removed.
    bool is_recursive() const noexcept { return recursive_; }
    bool is_case_sensitive() const noexcept { return case_sensitive_; }
    /// The remaining text; lower case if case does not matter.
    const String& text() const noexcept { return pattern_; }

    /// The pattern of the level below; call it only if has_more_segments(). It is recursive only if
    /// it begins with `**` itself.
    BasicPathPattern next_segment() const;

    /// Tests one name against the first segment.
    bool matches(View name) const { return kind_ == pattern_any || matches_segment(name); }
    bool matches(const Unit* name, std::size_t length) const { return matches({name, length}); }

  private:
    static PathPatternKind kind_of(View segment) noexcept;
    View segment() const noexcept { return View(pattern_).substr(0, segment_length_); }
    bool equal(View name, View literal) const noexcept;
    bool matches_segment(View name) const;
    bool matches_alternatives(View name) const;

    PathPatternKind kind_ = pattern_any;
    std::size_t segment_length_ = 0;
    bool has_more_segments_ = false;
    bool recursive_ = false;
    bool case_sensitive_ = false;
    String pattern_;
};

extern template class BasicPathPattern<char>;
extern template class BasicPathPattern<wchar_t>;

/// The form for the system's native names.
using PathPattern = BasicPathPattern<platform::NameUnit>;

} // namespace qnfile
