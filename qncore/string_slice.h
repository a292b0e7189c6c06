#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>
#include <utility>

namespace qncore {

/// A part of a text: the position of its first character and the number of characters. A count of
/// `npos` means up to the end of the text.
class StringRange {
  public:
    static constexpr std::size_t npos = static_cast<std::size_t>(-1);

    constexpr StringRange() noexcept = default;
    constexpr StringRange(std::size_t start, std::size_t count) noexcept
        : start_(start)
        , count_(count) {}

    constexpr std::size_t start() const noexcept { return start_; }
    constexpr std::size_t count() const noexcept { return count_; }

    void swap(StringRange& other) noexcept { std::swap(*this, other); }

    /// The part of this range that begins at `start`, relative to the range, and has `count`
    /// characters, or fewer if the range ends before.
    constexpr StringRange subrange(std::size_t start, std::size_t count) const noexcept {
        if (count_ == npos) {
            return {start_ + start, count};
        }
        const std::size_t first = std::min(start, count_);
        return {start_ + first, std::min(count, count_ - first)};
    }

    /// Makes the range end at the absolute position `end`.
    constexpr StringRange& last(std::size_t end) noexcept {
        count_ = end > start_ ? end - start_ : 0;
        return *this;
    }

    friend constexpr bool operator==(const StringRange&, const StringRange&) noexcept = default;

  private:
    std::size_t start_ = 0;
    std::size_t count_ = 0;
};

template <class Base>
struct StringSliceTraits;

template <>
struct StringSliceTraits<const char*> {
    static constexpr const char* empty_string_pointer() noexcept { return ""; }
};

/// A part of a text that the slice does not own and that must outlive it.
template <class Base>
class StringSlice;

template <>
class StringSlice<const char*> {
  public:
    constexpr StringSlice() noexcept = default;

    /// A null base is the empty text. If `count` is npos, the base is null-terminated and is
    /// measured at once.
    StringSlice(const char* base, std::size_t start, std::size_t count) noexcept
        : base_(base != nullptr ? base : StringSliceTraits<const char*>::empty_string_pointer())
        , range_(start, count) {
        if (count == StringRange::npos) {
            range_.last(std::strlen(base_));
        }
    }

    const char* data() const noexcept { return base_ + range_.start(); }
    std::size_t size() const noexcept { return range_.count(); }
    bool empty() const noexcept { return size() == 0; }
    const StringRange& range() const noexcept { return range_; }
    std::string_view view() const noexcept { return {data(), size()}; }
    std::string str() const { return std::string(view()); }

  private:
    const char* base_ = StringSliceTraits<const char*>::empty_string_pointer();
    StringRange range_;
};

/// The empty text, for functions that return a reference to a text.
extern const std::string g_emptyString;

} // namespace qncore
