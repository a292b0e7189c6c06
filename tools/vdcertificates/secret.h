#pragma once

#include <algorithm>
#include <string>
#include <string_view>

#include "platform/memory.h"

namespace tool {

/// Overwrites the text's whole memory and empties it.
inline void wipe(std::string& text) noexcept {
    text.resize(text.capacity());
    platform::secure_zero(text.data(), text.size());
    text.clear();
}

/// A text that is wiped on destruction, and in its old memory when it moves or grows.
class Secret {
  public:
    Secret() = default;
    explicit Secret(std::string&& text)
        : text_(std::move(text)) {
        wipe(text);
    }
    Secret(Secret&& other) noexcept
        : text_(std::move(other.text_)) {
        wipe(other.text_);
    }
    Secret& operator=(Secret&& other) noexcept {
        wipe(text_);
        text_ = std::move(other.text_);
        wipe(other.text_);
        return *this;
    }
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret() { wipe(text_); }

    const std::string& text() const noexcept { return text_; }
    char* data() noexcept { return text_.data(); }

    void reserve(std::size_t size) {
        if (size > text_.capacity()) {
            std::string larger;
            larger.reserve(std::max(size, 2 * text_.capacity()));
            larger = text_; // fits, so the memory stays
            wipe(text_);
            text_.swap(larger);
        }
    }
    void append(std::string_view more) {
        reserve(text_.size() + more.size());
        text_.append(more);
    }
    /// Appends zero bytes, or truncates.
    void resize(std::size_t size) {
        reserve(size);
        text_.resize(size);
    }
    void clear() noexcept { wipe(text_); }

  private:
    std::string text_;
};

} // namespace tool
