#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "qncore/source_location.h"
#include "qnxml/byte_run.h"
#include "qnxml/tokenizer.h"

namespace qnxml {

namespace impl {
struct TokenizerPlace;
}

/// The tokenizer over a source of UTF-8 characters. Checks whatever does not depend on nesting.
/// reader.h lists what it accepts beyond XML 1.0.
class XmlCharStreamTokenizerBase : public IXmlTokenizer {
  public:
    XmlCharStreamTokenizerBase(const XmlCharStreamTokenizerBase&) = delete;
    XmlCharStreamTokenizerBase& operator=(const XmlCharStreamTokenizerBase&) = delete;

    XmlTokenType next_token() override;
    qncore::StringSlice<const char*> token_text() const override;
    qncore::ErrorInfoPtr last_error() const override;
    std::uint8_t attribute_quote() const override;

    virtual ~XmlCharStreamTokenizerBase() = default;

  protected:
    XmlCharStreamTokenizerBase();

    /// Writes the bytes of the next character, at most 8, and returns their number: 0 at the end
    /// of the data, a negative value after a failure. A line end is the single byte 10, never 13.
    virtual int get_next_char(char* out) = 0;

    /// Creates an error with that message at the current position, replaces the stored error, and
    /// enters the final state of failure.
    XmlTokenType stream_failure(const char* message, const qncore::SourceLocation& location,
                                qncore::ErrorInfoPtr nested);

    /// The bytes that a derived class has ready, if any. A byte below 128 other than 10 and 13 may
    /// be taken from here instead of by get_next_char(). The bytes must not move until that is
    /// called.
    const char* cursor_ = nullptr;
    const char* dataEnd_ = nullptr;

  private:
    /// What the next call of next_token() continues with.
    enum class State : std::uint32_t {
        Start = 1,
        End = 2,
        Failed = 3,
        XmlDecl = 4,
        XmlDeclValue = 5,
        Doctype = 6,
        Comment = 7,
        CommentClose = 8, ///< the text has been delivered, its end has not
        Pi = 9,
        PiClose = 10,
        Cdata = 11,
        CdataClose = 12,
        StartTag = 13,
        StartTagValue = 14,
        Content = 15,
    };

    /// What follows "<!".
    struct Declaration {
        char first;
        const char* literal;
        State state;
        XmlTokenType token;
    };
    static const std::array<Declaration, 3> declarations;

    // Characters. The pending character has been read and not yet consumed.
    bool is_ready() const { return cursor_ != dataEnd_ && plainBytes.contains(*cursor_); }
    bool fetch() { return pendingLength_ != 0 || fetch_next(); }
    /// Reads the next character in place of the pending one. False, with nothing pending, at the
    /// end of the data and after a failure of the source.
    bool fetch_next() {
        pendingIsReady_ = is_ready();
        if (!pendingIsReady_) {
            return next_char_uncond();
        }
        pending_[0] = *cursor_++;
        pendingLength_ = 1;
        return true;
    }
    bool next_char_uncond();
    void drop() { pendingLength_ = 0; }
    bool pending_is(char byte) const { return pendingLength_ == 1 && pending_[0] == byte; }
    /// Consumes the byte if it is next, pending or ready. It must be one that may be taken from the
    /// cursor.
    bool accept_ready(char byte) {
        if (pendingLength_ != 0) {
            return pending_is(byte) && std::exchange(pendingLength_, 0) != 0;
        }
        const bool accepted = cursor_ != dataEnd_ && *cursor_ == byte;
        cursor_ += accepted ? 1 : 0;
        return accepted;
    }
    bool pending_in_name() const;
    /// Moves the pending character to the text. Returns true if the text is now a whole chunk.
    bool append_pending() {
        text_.append(pending_.data(), pendingLength_);
        drop();
        return text_.size() > chunkLimit;
    }

    // Texts. A text that is ready as a whole is not copied; the token refers to the bytes.
    template <const ByteSet& plain, const ByteSet& ends>
    bool take_text();
    bool take_name(const ByteSet& terminators);
    void copy_text_in_place();

    // Helpers of the parse functions.
    bool expect_literal(const char* literal);
    bool read_name(const ByteSet& terminators, const char* message) {
        return take_name(terminators) || read_name_by_characters(terminators, message);
    }
    bool read_name_by_characters(const ByteSet& terminators, const char* message);
    bool read_equals_sign();
    bool skip_whitespace();
    XmlTokenType no_char(const char* message, const impl::TokenizerPlace& place);
    XmlTokenType syntax_failure(const char* message, const impl::TokenizerPlace& place);
    XmlTokenType fail(const qncore::ErrorCode& code, const char* message,
                      const qncore::SourceLocation& location, qncore::ErrorInfoPtr nested);

    XmlTokenType parse_attrname(bool after_blanks, const impl::TokenizerPlace& place);
    XmlTokenType parse_after_attrname();
    XmlTokenType parse_attrvalue();
    XmlTokenType parse_attrvalue_by_characters();
    bool take_attrvalue();
    XmlTokenType end_attrvalue();
    XmlTokenType parse_cdata();
    XmlTokenType parse_comment();
    XmlTokenType parse_content();
    XmlTokenType parse_content_by_characters();
    XmlTokenType past_end();
    XmlTokenType parse_declaration();
    XmlTokenType parse_doctype();
    XmlTokenType parse_endtag();
    XmlTokenType parse_markup();
    XmlTokenType parse_pi();
    XmlTokenType parse_pi_target();
    XmlTokenType parse_reference();
    XmlTokenType parse_starttag();
    XmlTokenType parse_xmldecl();
    bool parse_char_reference();
    XmlTokenType close_section(State closing, XmlTokenType end);
    XmlTokenType end_tag(const char* literal, XmlTokenType end, const char* message,
                         const impl::TokenizerPlace& place);
    XmlTokenType enter(State state, XmlTokenType token) {
        state_ = state;
        return token;
    }

    static constexpr ByteSet plainBytes = ByteSet::plain_but("");
    static constexpr ByteSet noBytes = ByteSet::of("");
    /// A chunk ends once it is longer than this, which leaves room for one sequence of six bytes.
    static constexpr std::size_t chunkLimit = 1017;

    State state_ = State::Start;
    std::string text_;             ///< one string for all tokens
    std::string_view textInPlace_; ///< the token's text among the ready bytes; null if in text_
    std::array<char, 8> pending_{};
    std::size_t pendingLength_ = 0; ///< 0 if nothing is pending
    bool pendingIsReady_ = false;   ///< the pending character is the byte before the cursor
    std::uint8_t quote_ = 0;
    std::uint32_t doctypeDepth_ = 0;
    qncore::ErrorInfoPtr error_;
};

/// If nothing is pending, takes the ready bytes of `plain` that would be taken one by one. Returns
/// true if they complete a chunk, or if they are the whole text of the token because a byte of
/// `ends` follows, which is then pending.
template <const ByteSet& plain, const ByteSet& ends>
bool XmlCharStreamTokenizerBase::take_text() {
    if (pendingLength_ != 0) {
        return false;
    }
    const char* const begin = cursor_;
    const std::size_t room = chunkLimit + 1 - text_.size();
    cursor_ = impl::end_of_run<plain>(
        begin, begin + std::min(room, static_cast<std::size_t>(dataEnd_ - begin)));
    const std::string_view run(begin, static_cast<std::size_t>(cursor_ - begin));
    if (run.empty()) {
        return false;
    }
    const bool completes_chunk = run.size() == room;
    if (!text_.empty() || (!completes_chunk && (cursor_ == dataEnd_ || !ends.contains(*cursor_)))) {
        text_.append(run);
        return completes_chunk;
    }
    textInPlace_ = run;
    return completes_chunk || fetch_next();
}

} // namespace qnxml
