#include "qnxml/encoding_names.h"

#include <string_view>

#include "qnuri/char_classes.h"

namespace qnxml {

namespace chars = qnuri::chars;

namespace {

/// A cursor over one name.
class NameCursor {
  public:
    explicit NameCursor(std::string_view name) noexcept
        : rest_(name) {}

    bool at_end() const noexcept { return rest_.empty(); }
    char byte() const noexcept { return rest_.front(); }
    void step() noexcept { rest_.remove_prefix(1); }

    /// Moves to the next byte that counts, or to the end.
    void skip_ignored() noexcept {
        while (!at_end() && !chars::is(byte(), chars::alpha) && !counts_as_digit(byte())) {
            step();
        }
        in_number_ = !at_end() && chars::is(byte(), chars::digit);
    }

  private:
    /// A zero counts only inside a number.
    bool counts_as_digit(char byte) const noexcept {
        return chars::is(byte, chars::digit) && (byte != '0' || in_number_);
    }

    std::string_view rest_;
    bool in_number_ = false;
};

} // namespace

bool encoding_names_equal(const char* first, std::size_t firstSize, const char* second,
                          std::size_t secondSize) noexcept {
    NameCursor left(std::string_view(first, firstSize));
    NameCursor right(std::string_view(second, secondSize));
    while (!left.at_end() || !right.at_end()) {
        const bool same = !left.at_end() && !right.at_end() && left.byte() == right.byte();
        if (!same) {
            // Required: equal bytes do not pass here, so a digit among them does not begin a
            // number, and "utf10" equals "utf1".
            left.skip_ignored();
            right.skip_ignored();
            if (left.at_end() || right.at_end()) {
                return left.at_end() && right.at_end();
            }
            if (chars::to_lower(left.byte()) != chars::to_lower(right.byte())) {
                return false;
            }
        }
        left.step();
        right.step();
    }
    return true;
}

} // namespace qnxml
