#include "qnuri/escaped_text.h"

#include <algorithm>

#include "qnuri/char_classes.h"

namespace qnuri {

namespace {

/// Folds the two characters after each "%" of a text that it is given one by one.
class FoldedEscapes {
  public:
    char next(char c) noexcept {
        if (digits_ > 0) {
            --digits_;
            return chars::is(c, chars::hex) ? chars::to_lower(c) : c;
        }
        digits_ = c == '%' ? 2 : 0;
        return c;
    }

  private:
    int digits_ = 0; ///< how many of the two are still to come
};

} // namespace

int compare_escaped(const char* left, std::size_t leftLength, const char* right,
                    std::size_t rightLength) noexcept {
    FoldedEscapes leftFold;
    FoldedEscapes rightFold;
    const std::size_t shorter = std::min(leftLength, rightLength);
    for (std::size_t i = 0; i < shorter; ++i) {
        const auto l = static_cast<signed char>(leftFold.next(left[i]));
        const auto r = static_cast<signed char>(rightFold.next(right[i]));
        if (l != r) {
            return l - r;
        }
    }
    return static_cast<int>(static_cast<std::uint32_t>(leftLength - rightLength));
}

std::uint32_t hash_escaped(const char* text, std::size_t length) noexcept {
    FoldedEscapes fold;
    std::uint32_t hash = 0;
    for (std::size_t i = 0; i < length; ++i) {
        hash = 5 * hash + static_cast<unsigned char>(fold.next(text[i]));
    }
    return hash;
}

} // namespace qnuri
