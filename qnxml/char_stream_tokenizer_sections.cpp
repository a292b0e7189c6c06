// What encloses raw text: the DOCTYPE declaration, comments, processing instructions and CDATA.
#include "qnxml/char_stream_tokenizer.h"
#include "qnxml/tokenizer_location.h"

namespace qnxml {

namespace {

constexpr ByteSet doctype_bytes = ByteSet::plain_but("<>");
constexpr ByteSet comment_bytes = ByteSet::plain_but("-");
constexpr ByteSet pi_bytes = ByteSet::plain_but("?");
constexpr ByteSet cdata_bytes = ByteSet::plain_but("]");

} // namespace

/// Consumes the last byte of a section's end: the end token itself when no text is held, else the
/// text first.
XmlTokenType XmlCharStreamTokenizerBase::close_section(XmlTokenizerState closing,
                                                       XmlTokenType end) {
    drop();
    return text_.empty() ? enter(XmlTokenizerState::Content, end)
                         : enter(closing, XmlTokenType::CharData);
}

/// Passes the declaration on as text. Required: only the balance of angle brackets counts, in
/// quotes, too.
XmlTokenType XmlCharStreamTokenizerBase::parse_doctype() {
    text_.clear();
    for (;;) {
        if (take_run(doctype_bytes)) {
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
    return enter(XmlTokenizerState::Content, XmlTokenType::DoctypeEnd);
}

/// Required: the character behind a lone "-" is taken unexamined.
XmlTokenType XmlCharStreamTokenizerBase::parse_comment() {
    constexpr const char* end_of_data = "End of data in comment";
    text_.clear();
    for (;;) {
        if (take_run(comment_bytes)) {
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
    return close_section(XmlTokenizerState::CommentClose, XmlTokenType::CommentEnd);
}

/// Required: a "?" that does not close the instruction is lost, and the character behind it is
/// taken unexamined, so that "??>" closes nothing.
XmlTokenType XmlCharStreamTokenizerBase::parse_pi() {
    constexpr const char* end_of_data = "End of data in processing instruction";
    text_.clear();
    for (;;) {
        if (take_run(pi_bytes)) {
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
                return close_section(XmlTokenizerState::PiClose, XmlTokenType::PIEnd);
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
        if (take_run(cdata_bytes)) {
            return XmlTokenType::CharData;
        }
        if (!fetch()) {
            return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_cdata"));
        }
        if (pending_is(']')) {
            if (!fetch_next()) {
                return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_cdata"));
            }
            // Of a row of brackets the last two may belong to the end.
            while (pending_is(']')) {
                if (!fetch_next()) {
                    return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_cdata"));
                }
                if (pending_is('>')) {
                    return close_section(XmlTokenizerState::CdataClose, XmlTokenType::CDATAEnd);
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
