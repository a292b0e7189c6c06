#pragma once

#include <string>

#include "platform/memory.h"

namespace tool {

/// Overwrites all that the text's memory held and empties it.
inline void wipe(std::string& text) noexcept {
    text.resize(text.capacity());
    platform::secure_zero(text.data(), text.size());
    text.clear();
}

/// A text that is wiped when it goes, and where it came from as well.
class Secret {
  public:
    Secret() = default;
    explicit Secret(std::string&& text)
        : text_(std::move(text)) {
        wipe(text);
    }
    Secret(Secret&& other) noexcept
        : Secret(std::move(other.text_)) {}
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

  private:
    std::string text_;
};

} // namespace tool
