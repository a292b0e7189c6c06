#include "qnxml/char_stream_tokenizer.h"

#include <algorithm>

#include "qncore/utf8.h"
#include "qnxml/char_classes.h"
#include "qnxml/errors.h"
#include "qnxml/tokenizer_location.h"

namespace qnxml {

namespace {

constexpr std::size_t text_capacity = 1023;

constexpr ByteSet bytes_of(std::uint32_t classes) {
    return ByteSet::ascii_where([classes](char byte) {
        return (char_class(static_cast<unsigned char>(byte)) & classes) != 0;
    });
}

constexpr ByteSet name_start_bytes = bytes_of(name_start_classes);
constexpr ByteSet name_bytes = bytes_of(name_classes);
constexpr ByteSet white_space = ByteSet::of(" \t\n");

} // namespace

XmlCharStreamTokenizerBase::XmlCharStreamTokenizerBase() {
    text_.reserve(text_capacity);
}

qncore::StringSlice<const char*> XmlCharStreamTokenizerBase::token_text() const {
    const std::string_view text = textInPlace_.data() != nullptr ? textInPlace_ : text_;
    return {text.data(), 0, text.size()};
}

qncore::ErrorInfoPtr XmlCharStreamTokenizerBase::last_error() const {
    return error_;
}

std::uint8_t XmlCharStreamTokenizerBase::attribute_quote() const {
    return quote_;
}

XmlTokenType XmlCharStreamTokenizerBase::next_token() {
    textInPlace_ = {};
    switch (state_) {
    case State::Start:
        text_.clear();
        return enter(State::Content, XmlTokenType::DocumentStart);
    case State::End:
    case State::Failed:
        return past_end();
    case State::XmlDecl:
        return parse_xmldecl();
    case State::XmlDeclValue:
    case State::StartTagValue:
        return parse_attrvalue();
    case State::Doctype:
        return parse_doctype();
    case State::Comment:
        return parse_comment();
    case State::CommentClose:
        return enter(State::Content, XmlTokenType::CommentEnd);
    case State::Pi:
        return parse_pi();
    case State::PiClose:
        return enter(State::Content, XmlTokenType::PIEnd);
    case State::Cdata:
        return parse_cdata();
    case State::CdataClose:
        return enter(State::Content, XmlTokenType::CDATAEnd);
    case State::StartTag:
        return parse_starttag();
    case State::Content:
        return parse_content();
    }
    return past_end();
}

/// The failures of next_token() itself.
XmlTokenType XmlCharStreamTokenizerBase::past_end() {
    return syntax_failure(state_ == State::End      ? "Read past end"
                          : state_ == State::Failed ? "Cannot continue after error"
                                                    : "Invalid parser state",
                          QN_TOKENIZER_LOCATION("next_token"));
}

bool XmlCharStreamTokenizerBase::next_char_uncond() {
    const int length = get_next_char(pending_.data());
    pendingLength_ = static_cast<std::size_t>(std::max(length, 0));
    if (length < 0) {
        if (!error_) {
            stream_failure("Error reading from stream",
                           QN_LOCATION("qnxml::XmlCharStreamTokenizerBase::next_char_uncond()"),
                           {});
        }
        state_ = State::Failed;
    }
    return length > 0;
}

/// Returns whether the pending character may continue the name in the text.
bool XmlCharStreamTokenizerBase::pending_in_name() const {
    unsigned int code_point = static_cast<unsigned char>(pending_[0]);
    if (pendingLength_ != 1) {
        code_point = 0;
        qncore::utf8_to_ucs4_char(pending_.data(), pendingLength_, &code_point);
    }
    return (char_class(code_point) & (text_.empty() ? name_start_classes : name_classes)) != 0;
}

/// Takes a name that is ready as a whole with its terminator, which is then pending. Otherwise
/// takes nothing and returns false.
bool XmlCharStreamTokenizerBase::take_name(const ByteSet& terminators) {
    if (pendingLength_ != 0 && !pendingIsReady_) {
        return false;
    }
    const char* const begin = cursor_ - pendingLength_;
    if (begin == dataEnd_ || !name_start_bytes.contains(*begin)) {
        return false;
    }
    const char* const end = impl::end_of_run<name_bytes>(begin, dataEnd_);
    if (end == dataEnd_ || !plainBytes.contains(*end) || !terminators.contains(*end)) {
        return false;
    }
    textInPlace_ = {begin, static_cast<std::size_t>(end - begin)};
    cursor_ = end;
    return fetch_next();
}

/// Copies the token's text if it is among the ready bytes, so that it outlives them.
void XmlCharStreamTokenizerBase::copy_text_in_place() {
    if (textInPlace_.data() != nullptr) {
        text_ = textInPlace_;
        textInPlace_ = {};
    }
}

/// Appends a name to the empty text, up to one of the terminators, which stays pending.
bool XmlCharStreamTokenizerBase::read_name_by_characters(const ByteSet& terminators,
                                                         const char* message) {
    for (;;) {
        if (!fetch()) {
            no_char("End of XML data in markup name", QN_TOKENIZER_LOCATION("read_name"));
            return false;
        }
        if (!pending_in_name()) {
            break;
        }
        append_pending();
    }
    if (!text_.empty() && pendingLength_ == 1 && terminators.contains(pending_[0])) {
        return true;
    }
    syntax_failure(message, QN_TOKENIZER_LOCATION("read_name"));
    return false;
}

/// Skips blanks, tabs and newlines. Returns true if there were any.
bool XmlCharStreamTokenizerBase::skip_whitespace() {
    bool any = false;
    while (fetch() && pendingLength_ == 1 && white_space.contains(pending_[0])) {
        drop();
        any = true;
    }
    return any;
}

/// Reads until the bytes of the literal have come in order. Required: other bytes between them are
/// lost, and only the end of the data or a failure of the source returns false.
bool XmlCharStreamTokenizerBase::expect_literal(const char* literal) {
    while (*literal != '\0') {
        if (!fetch()) {
            return false;
        }
        for (std::size_t i = 0; i < pendingLength_ && *literal != '\0' && pending_[i] == *literal;
             ++i) {
            ++literal;
        }
        drop();
    }
    return true;
}

/// The failure of a fetch: that of the source, which is already stored, or the end of the data.
XmlTokenType XmlCharStreamTokenizerBase::no_char(const char* message,
                                                 const impl::TokenizerPlace& place) {
    return state_ == State::Failed ? XmlTokenType::Error : syntax_failure(message, place);
}

XmlTokenType XmlCharStreamTokenizerBase::syntax_failure(const char* message,
                                                        const impl::TokenizerPlace& place) {
    text_.clear();
    textInPlace_ = {};
    return fail(error::qnxml_tokenizer_syntaxError, message,
                {place.function, place.file, place.line}, {});
}

XmlTokenType XmlCharStreamTokenizerBase::stream_failure(const char* message,
                                                        const qncore::SourceLocation& location,
                                                        qncore::ErrorInfoPtr nested) {
    return fail(error::qnxml_tokenizer_stream, message, location, std::move(nested));
}

XmlTokenType XmlCharStreamTokenizerBase::fail(const qncore::ErrorCode& code, const char* message,
                                              const qncore::SourceLocation& location,
                                              qncore::ErrorInfoPtr nested) {
    qncore::ErrorParams params;
    const std::string text = location_message(this->location(), message, &params);
    error_ = qncore::ErrorInfo::create(code, qncore::SourceString::copy_of(text), params, location,
                                       std::move(nested));
    return enter(State::Failed, XmlTokenType::Error);
}

} // namespace qnxml
