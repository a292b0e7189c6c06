#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace qnxml {

/// A set of bytes with one test per look-up.
class ByteSet {
  public:
    /// The bytes below 128 for which the test holds.
    template <class Test>
    static constexpr ByteSet ascii_where(Test test) {
        ByteSet set;
        for (unsigned char byte = 0; byte < 128; ++byte) {
            set.members_[byte] = test(static_cast<char>(byte));
        }
        return set;
    }

    /// The bytes of a text.
    static constexpr ByteSet of(std::string_view bytes) {
        return ascii_where([bytes](char byte) { return bytes.find(byte) != bytes.npos; });
    }

    /// The bytes below 128 except line ends and `special`.
    static constexpr ByteSet plain_but(std::string_view special) {
        return ascii_where([special](char byte) {
            return byte != '\n' && byte != '\r' && special.find(byte) == special.npos;
        });
    }

    constexpr bool contains(char byte) const noexcept {
        return members_[static_cast<unsigned char>(byte)];
    }

  private:
    std::array<bool, 256> members_{};
};

} // namespace qnxml
