#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "qncore/source_location.h"
#include "qnxml/byte_set.h"
#include "qnxml/tokenizer.h"

namespace qnxml {

/// What the next call of next_token() goes on with.
enum class XmlTokenizerState : std::uint32_t {
    Start = 1,
    End = 2,
    Failed = 3,
    XmlDecl = 4,
    XmlDeclValue = 5,
    Doctype = 6,
    Comment = 7,
    CommentClose = 8, ///< the text was delivered, its end was not
    Pi = 9,
    PiClose = 10,
    Cdata = 11,
    CdataClose = 12,
    StartTag = 13,
    StartTagValue = 14,
    Content = 15,
};

/// The tokenizer over a source of UTF-8 characters. It checks what needs no memory of nesting, and
/// is lenient where this is noted; it does not validate, and it does not look whether a character
/// is an XML Char.
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

    /// Writes the bytes of the next character, 8 at most, and gives their number; 0 is the end of
    /// the data, a negative value a failure. A line end is the one byte 10, and 13 never comes.
    virtual int get_next_char(char* out) = 0;

    /// Both make the error of that message at the current position, keep it in place of any other
    /// and fail for good.
    XmlTokenType syntax_failure(const char* message, const qncore::SourceLocation& location);
    XmlTokenType stream_failure(const char* message, const qncore::SourceLocation& location,
                                qncore::ErrorInfoPtr nested);

    /// The bytes that a derived class holds ready, empty where it holds none. A byte below 128
    /// other than 10 and 13 may be taken from here in place of a call of get_next_char(), which
    /// spares that call for each byte of a run; all else must come from get_next_char().
    const char* cursor_ = nullptr;
    const char* dataEnd_ = nullptr;

  private:
    // Characters. The pending character is read and not yet consumed.
    bool fetch() { return pendingLength_ != 0 || fetch_next(); }
    /// Reads the next character in place of the pending one. False, with nothing pending, at the
    /// end of the data and after a failure of the source.
    bool fetch_next() {
        if (cursor_ == dataEnd_ || !plainBytes.contains(*cursor_)) {
            return next_char_uncond();
        }
        pending_[0] = *cursor_++;
        pendingLength_ = 1;
        return true;
    }
    bool next_char_uncond();
    void drop() { pendingLength_ = 0; }
    bool pending_is(char byte) const { return pendingLength_ == 1 && pending_[0] == byte; }
    bool pending_in_name() const;
    /// Moves the pending character to the text. True when the text is a whole chunk now.
    bool append_pending() {
        text_.append(pending_.data(), pendingLength_);
        drop();
        return text_.size() > chunkLimit;
    }
    bool take_run(const ByteSet& plain);
    /// Moves the bytes that lie ready to the text, up to the first that is not of `plain`.
    void take_ready(const ByteSet& plain, const char* limit) {
        const char* end = cursor_;
        while (end != limit && plain.contains(*end)) {
            ++end;
        }
        text_.append(cursor_, static_cast<std::size_t>(end - cursor_));
        cursor_ = end;
    }

    // Helpers of the parse functions.
    bool expect_literal(const char* literal);
    bool read_name(const ByteSet& terminators, const char* message);
    std::int64_t skip_whitespace();
    XmlTokenType no_char(const char* message, const qncore::SourceLocation& location);
    XmlTokenType fail(const qncore::ErrorCode& code, const char* message,
                      const qncore::SourceLocation& location, qncore::ErrorInfoPtr nested);

    XmlTokenType parse_attrname();
    XmlTokenType parse_attrvalue();
    XmlTokenType parse_cdata();
    XmlTokenType parse_comment();
    XmlTokenType parse_content();
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
    XmlTokenType close_section(XmlTokenizerState closing, XmlTokenType end);
    XmlTokenType enter(XmlTokenizerState state, XmlTokenType token);

    static constexpr ByteSet plainBytes = ByteSet::plain_but("");
    /// A chunk ends once it is longer than this, which leaves room for one sequence of six bytes.
    static constexpr std::size_t chunkLimit = 1017;

    XmlTokenizerState state_ = XmlTokenizerState::Start;
    std::string text_; ///< one string for all tokens
    std::array<char, 8> pending_{};
    std::size_t pendingLength_ = 0; ///< 0 when nothing is pending
    std::uint8_t quote_ = 0;
    std::uint32_t doctypeDepth_ = 0;
    qncore::ErrorInfoPtr error_;
};

} // namespace qnxml
