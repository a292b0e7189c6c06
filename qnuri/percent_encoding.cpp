#include "qnuri/percent_encoding.h"

#include <cstring>

#include "qnuri/decoding_pass.h"

namespace qnuri {

using chars::CharClass;

bool impl::DecodingPass::decode(CharClass ends, CharClass decoded, CharClass plain) {
    bool all_plain = true;
    while (at_ < text_.size() && !chars::is(text_[at_], ends)) {
        if (!is_escape(text_, at_)) {
            all_plain = false;
            ++at_;
        } else if (const char c = escaped_char(text_, at_); chars::is(c, decoded)) {
            move_down();
            text_[written()] = c;
            kept_ = at_ += 3;
            gap_ += 2;
        } else {
            at_ += 3;
        }
        keep_while(plain);
    }
    return all_plain;
}

/// Moves what has been passed to the end of what is written.
void impl::DecodingPass::move_down() noexcept {
    if (gap_ != 0) {
        std::memmove(text_.data() + kept_ - gap_, text_.data() + kept_, at_ - kept_);
    }
    kept_ = at_;
}

void impl::DecodingPass::remove_gap() {
    move_down();
    text_.erase(written(), gap_);
    seek(written());
    gap_ = 0;
}

void impl::DecodingPass::finish() {
    close_gap();
    // Required: storage that is nearly exact stays.
    const bool exact = ((text_.size() + 1) ^ (text_.capacity() + 1)) < 4;
    if (!exact && text_.capacity() > std::string().capacity()) {
        std::string(text_).swap(text_);
    }
}

std::string percent_decode(std::string_view text, CharClass decoded) {
    std::string result(text);
    impl::DecodingPass pass(result);
    pass.decode_until(CharClass{}, decoded, CharClass{});
    pass.finish();
    return result;
}

std::string percent_encode(std::string_view text, CharClass kept) {
    constexpr char digits[] = "0123456789abcdef";
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (chars::is(c, kept)) {
            result.push_back(c);
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        result.append({'%', digits[byte / 16], digits[byte % 16]});
    }
    return result;
}

} // namespace qnuri
