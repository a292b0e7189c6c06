// Sections of raw text: the DOCTYPE declaration, comments, processing instructions and CDATA.
#include "qnxml/char_stream_tokenizer.h"
#include "qnxml/tokenizer_location.h"

namespace qnxml {

namespace {

constexpr ByteSet doctype_bytes = ByteSet::plain_but("<>");
constexpr ByteSet comment_bytes = ByteSet::plain_but("-");
constexpr ByteSet pi_bytes = ByteSet::plain_but("?");
constexpr ByteSet cdata_bytes = ByteSet::plain_but("]");

} // namespace

/// Consumes the last byte of a section's end and returns its text, or its end if there is no text.
XmlTokenType XmlCharStreamTokenizerBase::close_section(State closing, XmlTokenType end) {
    drop();
    return text_.empty() ? enter(State::Content, end) : enter(closing, XmlTokenType::CharData);
}

/// Delivers the declaration as text. Required: only the balance of angle brackets counts, even in
/// quotes.
XmlTokenType XmlCharStreamTokenizerBase::parse_doctype() {
    text_.clear();
    for (;;) {
        if (take_text<doctype_bytes, noBytes>()) {
            return XmlTokenType::CharData;
        }
        if (!fetch()) {
            return no_char("End of data in DOCTYPE", QN_TOKENIZER_LOCATION("parse_doctype"));
        }
        if (pending_is('<')) {
            ++doctypeDepth_;
        } else if (pending_is('>')) {
            if (doctypeDepth_ == 0) {
                break;
            }
            --doctypeDepth_;
        }
        if (append_pending()) {
            return XmlTokenType::CharData;
        }
    }
    if (!text_.empty()) {
        return XmlTokenType::CharData;
    }
    drop();
    return enter(State::Content, XmlTokenType::DoctypeEnd);
}

/// Required: the character after a lone "-" is taken unexamined.
XmlTokenType XmlCharStreamTokenizerBase::parse_comment() {
    constexpr const char* end_of_data = "End of data in comment";
    text_.clear();
    for (;;) {
        if (take_text<comment_bytes, noBytes>()) {
            return XmlTokenType::CharData;
        }
        if (!fetch()) {
            return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_comment"));
        }
        if (pending_is('-')) {
            if (!fetch_next()) {
                return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_comment"));
            }
            if (pending_is('-')) {
                break;
            }
            text_.push_back('-');
        }
        if (append_pending()) {
            return XmlTokenType::CharData;
        }
    }
    if (!fetch_next()) {
        return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_comment"));
    }
    if (!pending_is('>')) {
        return syntax_failure("Sequence '--' is invalid in comment",
                              QN_TOKENIZER_LOCATION("parse_comment"));
    }
    return close_section(State::CommentClose, XmlTokenType::CommentEnd);
}

/// Required: a "?" that does not close the instruction is lost, and the character after it is taken
/// unexamined, so "??>" does not close it.
XmlTokenType XmlCharStreamTokenizerBase::parse_pi() {
    constexpr const char* end_of_data = "End of data in processing instruction";
    text_.clear();
    for (;;) {
        if (take_text<pi_bytes, noBytes>()) {
            return XmlTokenType::CharData;
        }
        if (!fetch()) {
            return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_pi"));
        }
        if (pending_is('?')) {
            if (!fetch_next()) {
                return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_pi"));
            }
            if (pending_is('>')) {
                return close_section(State::PiClose, XmlTokenType::PIEnd);
            }
        }
        if (append_pending()) {
            return XmlTokenType::CharData;
        }
    }
}

XmlTokenType XmlCharStreamTokenizerBase::parse_cdata() {
    constexpr const char* end_of_data = "End of data in CDATA";
    text_.clear();
    for (;;) {
        if (take_text<cdata_bytes, noBytes>()) {
            return XmlTokenType::CharData;
        }
        if (!fetch()) {
            return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_cdata"));
        }
        if (pending_is(']')) {
            if (!fetch_next()) {
                return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_cdata"));
            }
            // Only the last two brackets of a row may belong to the end. The row is one step, and
            // one chunk, however long it is.
            while (pending_is(']')) {
                if (!fetch_next()) {
                    return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_cdata"));
                }
                if (pending_is('>')) {
                    return close_section(State::CdataClose, XmlTokenType::CDATAEnd);
                }
                text_.push_back(']');
            }
            text_.push_back(']');
        }
        if (append_pending()) {
            return XmlTokenType::CharData;
        }
    }
}

} // namespace qnxml
