#pragma once

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <limits>
#include <string_view>
#include <utility>

namespace qncore {

/// A text that is a copy, or borrowed from a string that must outlive it. The constructor from a
/// literal neither allocates nor measures, so constants can hold one.
class SourceString {
  public:
    static const char sm_emptyStrData[1];

    constexpr SourceString() noexcept = default;

    /// Borrows a null-terminated literal. Null gives the empty text.
    constexpr SourceString(const char* literal) noexcept // implicit by design: literals are texts
        : data_(literal != nullptr ? literal : sm_emptyStrData)
        , size_(literal != nullptr ? unmeasured : 0) {}

    /// Borrows (`borrow` true) or copies a null-terminated text.
    SourceString(const char* text, bool borrow);

    /// Borrows a text that need not be null-terminated.
    static constexpr SourceString borrow(std::string_view text) noexcept {
        SourceString borrowed;
        if (!text.empty()) {
            borrowed.data_ = text.data();
            borrowed.size_ = static_cast<std::int64_t>(text.size());
        }
        return borrowed;
    }

    /// Owns a copy of the text.
    static SourceString copy_of(std::string_view text);

    constexpr SourceString(const SourceString& other)
        : data_(other.data_)
        , size_(other.size_) {
        if (size_ < 0) {
            clone_dynamic();
        }
    }
    constexpr SourceString(SourceString&& other) noexcept
        : data_(std::exchange(other.data_, sm_emptyStrData))
        , size_(std::exchange(other.size_, 0)) {}
    SourceString& operator=(SourceString other) noexcept {
        swap(other);
        return *this;
    }
    constexpr ~SourceString() {
        if (size_ < 0) {
            dealloc_dynamic();
        }
    }

    void swap(SourceString& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(size_, other.size_);
    }

    /// Negative, zero or positive, by bytes.
    int compare(const SourceString& other) const noexcept;

    /// The text. Measures a borrowed literal at each call.
    std::string_view view() const noexcept;

    friend bool operator==(const SourceString& left, const SourceString& right) noexcept {
        return left.compare(right) == 0;
    }
    friend bool operator<(const SourceString& left, const SourceString& right) noexcept {
        return left.compare(right) < 0;
    }

  private:
    static constexpr std::int64_t unmeasured = std::numeric_limits<std::int64_t>::max();

    void alloc_dynamic(const char* text, std::size_t length);
    void dealloc_dynamic() noexcept;
    void clone_dynamic();

    const char* data_ = sm_emptyStrData; ///< never null
    std::int64_t size_ = 0; ///< length of a borrowed text, `unmeasured`, or -1 - length when owned
};

std::ostream& operator<<(std::ostream& stream, const SourceString& text);

} // namespace qncore
