#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace qnxml {

/// A set of bytes, one test a look-up.
class ByteSet {
  public:
    /// The bytes below 128 that stand for themselves wherever they come, and end no line, less
    /// those of `special`.
    static constexpr ByteSet plain_but(std::string_view special) {
        ByteSet set;
        for (std::size_t byte = 0; byte < 128; ++byte) {
            set.members_[byte] = byte != '\n' && byte != '\r' &&
                                 special.find(static_cast<char>(byte)) == std::string_view::npos;
        }
        return set;
    }

    /// The bytes of a text.
    static constexpr ByteSet of(std::string_view bytes) {
        ByteSet set;
        for (const char byte : bytes) {
            set.members_[static_cast<unsigned char>(byte)] = true;
        }
        return set;
    }

    /// ASCII letters and the bytes of `others`.
    static constexpr ByteSet letters_and(std::string_view others) {
        ByteSet set;
        for (std::size_t byte = 0; byte < 128; ++byte) {
            set.members_[byte] = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
                                 others.find(static_cast<char>(byte)) != std::string_view::npos;
        }
        return set;
    }

    constexpr bool contains(char byte) const noexcept {
        return members_[static_cast<unsigned char>(byte)];
    }

  private:
    std::array<bool, 256> members_{};
};

} // namespace qnxml
