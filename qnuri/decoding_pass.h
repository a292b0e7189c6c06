#pragma once

#include <string>
#include <string_view>

#include "qnuri/char_classes.h"

namespace qnuri::impl {

/// One pass over a text that classifies each byte and decodes escapes in place.
///
/// A text in normal form is read once and not moved: only the first decoded escape opens a gap
/// between what is written and what is to be read, and whole stretches move down over it. The scan
/// needs no test for the end, as the zero byte after the text is in no class. The pass also tells
/// whether a stretch holds nothing but given characters and escapes. This is true of the result,
/// too, as a decoded byte is one of these characters and never a "%". Anything else, such as a "%"
/// that begins no escape now but may begin one in the result, is left to a check of the result.
class DecodingPass {
  public:
    explicit DecodingPass(std::string& text) noexcept
        : text_(text) {}

    /// What has not been passed yet.
    std::string_view rest() const noexcept { return std::string_view(text_).substr(at_); }
    /// The end of what has been passed, as it will be in the result.
    std::size_t written() const noexcept { return at_ - gap_; }
    bool stands_at(chars::CharClass one_of) const noexcept {
        return at_ < text_.size() && chars::is(text_[at_], one_of);
    }

    /// Passes `count` characters, which stay as they are.
    void keep(std::size_t count) noexcept { at_ += count; }
    void keep_while(chars::CharClass kept) noexcept {
        const char* const text = text_.data();
        std::size_t at = at_;
        while (chars::is(text[at], kept)) {
            ++at;
        }
        at_ = at;
    }
    /// Passes all up to the first of `ends`, or to the end.
    void keep_until(chars::CharClass ends) noexcept { at_ = chars::find_first(text_, ends, at_); }
    /// The same, and decodes the escapes whose bytes are in `decoded`, a subset of `plain`. Returns
    /// whether all was in `plain`, which holds none of `ends`, or an escape.
    bool decode_until(chars::CharClass ends, chars::CharClass decoded, chars::CharClass plain) {
        keep_while(plain);
        return at_ == text_.size() || chars::is(text_[at_], ends) || decode(ends, decoded, plain);
    }
    /// Removes the gap, so that the text can be edited; `seek` must follow if its size changes.
    void close_gap() {
        if (gap_ != 0) {
            remove_gap();
        }
    }
    void seek(std::size_t position) noexcept { at_ = kept_ = position; }
    /// Cuts the text to what has been passed, without storage that it does not need.
    void finish();

  private:
    /// Does what `decode_until` does, from an escape or a character that is not plain.
    bool decode(chars::CharClass ends, chars::CharClass decoded, chars::CharClass plain);
    void remove_gap();
    void move_down() noexcept;

    std::string& text_;
    std::size_t at_ = 0;   ///< the first character that has not been passed
    std::size_t kept_ = 0; ///< the first one that is still to be moved down by the gap
    std::size_t gap_ = 0;  ///< how many characters decoding has saved
};

} // namespace qnuri::impl
