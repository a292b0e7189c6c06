#include "qnfile/path_pattern.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <memory_resource>
#include <optional>
#include <vector>

#include "qncore/utf8.h"

namespace qnfile {
namespace {

/// Units of the whole character at the start of `text`; 0 if it is invalid.
std::size_t character_length(std::string_view text) noexcept {
    const std::size_t length = qncore::utf8_sequence_length(text.front());
    return length <= text.size() ? length : 0;
}

std::size_t character_length(std::wstring_view text) noexcept {
    // Required: 0xDFFF is not a low surrogate here, but a character of its own.
    const auto is_low = [](wchar_t unit) { return unit >= 0xDC00 && unit <= 0xDFFE; };
    const wchar_t first = text.front();
    if (first >= 0xD800 && first <= 0xDBFF) {
        return text.size() >= 2 && is_low(text[1]) ? 2 : 0;
    }
    return is_low(first) ? 0 : 1;
}

template <class Unit>
constexpr Unit fold(Unit unit) noexcept {
    return unit >= Unit{'A'} && unit <= Unit{'Z'} ? static_cast<Unit>(unit - 'A' + 'a') : unit;
}

/// The wildcard match. Searches after the same star differ only in where they begin in the text, so
/// it proceeds star by star and keeps the set of those positions: the time is the product of the
/// lengths, however many stars there are. The earliest position alone does not suffice, because an
/// invalid character ends one scan and not another.
template <class Unit>
class Glob {
  public:
    using View = std::basic_string_view<Unit>;

    Glob(View text, bool caseSensitive)
        : text_(text)
        , case_sensitive_(caseSensitive)
        , begins_(text.size() + 1, false, &memory_)
        , ends_(text.size() + 1, false, &memory_) {}

    bool matches(View pattern) {
        const std::optional<std::size_t> head = match_literal(0, next_piece(pattern));
        if (!head || pattern.empty()) {
            return head == text_.size();
        }
        begins_[*head] = true;
        for (std::size_t stars = 0;; ++stars) {
            pattern.remove_prefix(std::min(pattern.find_first_not_of(star), pattern.size()));
            if (pattern.empty()) {
                return true;
            }
            if (stars == star_limit || !search(next_piece(pattern))) {
                return false;
            }
            if (pattern.empty()) {
                return ends_[text_.size()];
            }
            begins_.swap(ends_);
        }
    }

  private:
    using Places = std::pmr::vector<bool>;

    static constexpr Unit star{'*'};
    /// Required: a pattern does not match if more runs of stars have something after them.
    static constexpr std::size_t star_limit = 32;

    /// Removes the text before the next star from the pattern, and returns it.
    static View next_piece(View& pattern) noexcept {
        const View piece = pattern.substr(0, pattern.find(star));
        pattern.remove_prefix(piece.size());
        return piece;
    }

    /// Tries the piece at each begin and, by whole characters, after it, and collects the ends.
    /// Returns false if it matches nowhere.
    bool search(View piece) {
        ends_.assign(ends_.size(), false);
        bool found = false;
        for (std::size_t place = 0; place < text_.size(); ++place) {
            if (!begins_[place]) {
                continue;
            }
            if (const auto end = match_piece(place, piece)) {
                ends_[*end] = true;
                found = true;
            }
            begins_[place + character_length(text_.substr(place))] = true;
        }
        return found;
    }

    /// Required: the first unit after a star takes one unit of the text, even if it is a `?` and
    /// the character is longer.
    std::optional<std::size_t> match_piece(std::size_t place, View piece) const noexcept {
        if (piece.front() != Unit{'?'} && !equal(place, piece.front())) {
            return std::nullopt;
        }
        return match_literal(place + 1, piece.substr(1));
    }

    /// Matches a text without stars; returns the position after it.
    std::optional<std::size_t> match_literal(std::size_t place, View literal) const noexcept {
        for (const Unit unit : literal) {
            if (place == text_.size()) {
                return std::nullopt;
            }
            std::size_t length = 1;
            if (!equal(place, unit)) {
                length = unit == Unit{'?'} ? character_length(text_.substr(place)) : 0;
            }
            if (length == 0) {
                return std::nullopt;
            }
            place += length;
        }
        return place;
    }

    bool equal(std::size_t place, Unit unit) const noexcept {
        return (case_sensitive_ ? text_[place] : fold(text_[place])) == unit;
    }

    View text_;
    bool case_sensitive_;
    std::array<std::byte, 256> buffer_; ///< enough for most names
    std::pmr::monotonic_buffer_resource memory_{buffer_.data(), buffer_.size()};
    Places begins_; ///< where the search after a star begins
    Places ends_;   ///< where the piece after it ended
};

} // namespace

template <class Unit>
BasicPathPattern<Unit>::BasicPathPattern(String text, bool caseSensitive)
    : case_sensitive_(caseSensitive)
    , pattern_(std::move(text)) {
    constexpr Unit any_depth[] = {'*', '*', '/'};
    if (pattern_ == View(any_depth, 2) || pattern_.starts_with(View(any_depth, 3))) {
        recursive_ = true;
        pattern_.erase(0, 3);
    }
    if (!case_sensitive_) {
        std::transform(pattern_.begin(), pattern_.end(), pattern_.begin(), fold<Unit>);
    }
    // Required: a text that begins with a slash is a single segment.
    const std::size_t slash = pattern_.find(Unit{'/'});
    has_more_segments_ = slash != String::npos && slash != 0;
    segment_length_ = has_more_segments_ ? slash : pattern_.size();
    kind_ = kind_of(segment());
}

template <class Unit>
PathPatternKind BasicPathPattern<Unit>::kind_of(View segment) noexcept {
    if (segment.find(Unit{'|'}) != View::npos) {
        return pattern_alternatives;
    }
    if (segment.empty()) {
        return pattern_any;
    }
    const auto stars = std::count(segment.begin(), segment.end(), Unit{'*'});
    const bool begins = segment.front() == Unit{'*'};
    const bool ends = segment.back() == Unit{'*'};
    if (segment.find(Unit{'?'}) != View::npos || stars > 1 || (stars == 1 && !begins && !ends)) {
        return pattern_wildcard;
    }
    if (begins) {
        return ends ? pattern_any : pattern_suffix;
    }
    return ends ? pattern_prefix : pattern_exact;
}

template <class Unit>
BasicPathPattern<Unit> BasicPathPattern<Unit>::next_segment() const {
    return {pattern_.substr(segment_length_ + 1), case_sensitive_};
}

template <class Unit>
bool BasicPathPattern<Unit>::matches_segment(View name) const {
    const View wanted = segment();
    switch (kind_) {
    case pattern_prefix:
        return name.size() >= wanted.size() - 1 &&
               equal(name.substr(0, wanted.size() - 1), wanted.substr(0, wanted.size() - 1));
    case pattern_suffix:
        return name.size() >= wanted.size() - 1 &&
               equal(name.substr(name.size() - (wanted.size() - 1)), wanted.substr(1));
    case pattern_exact:
        return equal(name, wanted);
    case pattern_wildcard:
        return Glob<Unit>(name, case_sensitive_).matches(wanted);
    case pattern_alternatives:
        return matches_alternatives(name);
    case pattern_any:
        break;
    }
    return true;
}

template <class Unit>
bool BasicPathPattern<Unit>::matches_alternatives(View name) const {
    // An alternative may be empty, but a trailing `|` adds none.
    for (View rest = segment(); !rest.empty();) {
        const View alternative = rest.substr(0, rest.find(Unit{'|'}));
        if (Glob<Unit>(name, case_sensitive_).matches(alternative)) {
            return true;
        }
        rest.remove_prefix(std::min(alternative.size() + 1, rest.size()));
    }
    return false;
}

template <class Unit>
bool BasicPathPattern<Unit>::equal(View name, View literal) const noexcept {
    if (case_sensitive_) {
        return name == literal;
    }
    return std::equal(name.begin(), name.end(), literal.begin(), literal.end(),
                      [](Unit left, Unit right) { return fold(left) == right; });
}

template class BasicPathPattern<char>;
template class BasicPathPattern<wchar_t>;

} // namespace qnfile
