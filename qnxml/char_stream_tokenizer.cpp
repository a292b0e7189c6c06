#include "qnxml/char_stream_tokenizer.h"

#include <algorithm>

#include "qncore/utf8.h"
#include "qnxml/char_classes.h"
#include "qnxml/errors.h"
#include "qnxml/tokenizer_location.h"

namespace qnxml {

namespace {

constexpr std::size_t text_capacity = 1023;

constexpr ByteSet name_start_bytes = ByteSet::letters_and("._");
constexpr ByteSet name_bytes = ByteSet::letters_and("._-:0123456789");

} // namespace

XmlCharStreamTokenizerBase::XmlCharStreamTokenizerBase() {
    text_.reserve(text_capacity);
}

qncore::StringSlice<const char*> XmlCharStreamTokenizerBase::token_text() const {
    return {text_.data(), 0, text_.size()};
}

qncore::ErrorInfoPtr XmlCharStreamTokenizerBase::last_error() const {
    return error_;
}

std::uint8_t XmlCharStreamTokenizerBase::attribute_quote() const {
    return quote_;
}

XmlTokenType XmlCharStreamTokenizerBase::next_token() {
    switch (state_) {
    case XmlTokenizerState::Start:
        text_.clear();
        return enter(XmlTokenizerState::Content, XmlTokenType::DocumentStart);
    case XmlTokenizerState::End:
        return syntax_failure("Read past end", QN_TOKENIZER_LOCATION("next_token"));
    case XmlTokenizerState::Failed:
        return syntax_failure("Cannot continue after error", QN_TOKENIZER_LOCATION("next_token"));
    case XmlTokenizerState::XmlDecl:
        return parse_xmldecl();
    case XmlTokenizerState::XmlDeclValue:
    case XmlTokenizerState::StartTagValue:
        return parse_attrvalue();
    case XmlTokenizerState::Doctype:
        return parse_doctype();
    case XmlTokenizerState::Comment:
        return parse_comment();
    case XmlTokenizerState::CommentClose:
        return enter(XmlTokenizerState::Content, XmlTokenType::CommentEnd);
    case XmlTokenizerState::Pi:
        return parse_pi();
    case XmlTokenizerState::PiClose:
        return enter(XmlTokenizerState::Content, XmlTokenType::PIEnd);
    case XmlTokenizerState::Cdata:
        return parse_cdata();
    case XmlTokenizerState::CdataClose:
        return enter(XmlTokenizerState::Content, XmlTokenType::CDATAEnd);
    case XmlTokenizerState::StartTag:
        return parse_starttag();
    case XmlTokenizerState::Content:
        return parse_content();
    }
    return syntax_failure("Invalid parser state", QN_TOKENIZER_LOCATION("next_token"));
}

XmlTokenType XmlCharStreamTokenizerBase::enter(XmlTokenizerState state, XmlTokenType token) {
    state_ = state;
    return token;
}

bool XmlCharStreamTokenizerBase::next_char_uncond() {
    const int length = get_next_char(pending_.data());
    pendingLength_ = static_cast<std::size_t>(std::max(length, 0));
    if (length < 0) {
        if (!error_) {
            stream_failure("Error reading from stream", QN_TOKENIZER_LOCATION("next_char_uncond"),
                           {});
        }
        state_ = XmlTokenizerState::Failed;
    }
    return length > 0;
}

/// With nothing pending, moves the bytes of `plain` that lie ready to the text, as far as one
/// character after the other would go. True when the text is a whole chunk now.
bool XmlCharStreamTokenizerBase::take_run(const ByteSet& plain) {
    if (pendingLength_ != 0) {
        return false;
    }
    const std::size_t room = chunkLimit + 1 - text_.size();
    take_ready(plain, cursor_ + std::min(room, static_cast<std::size_t>(dataEnd_ - cursor_)));
    return text_.size() > chunkLimit;
}

/// Whether the pending character may be the next one of the name in the text.
bool XmlCharStreamTokenizerBase::pending_in_name() const {
    const bool first = text_.empty();
    if (pendingLength_ == 1) {
        return (first ? name_start_bytes : name_bytes).contains(pending_[0]);
    }
    unsigned int code_point = 0;
    qncore::utf8_to_ucs4_char(pending_.data(), pendingLength_, &code_point);
    return (char_class(code_point) & (first ? name_start_classes : name_classes)) != 0;
}

/// Appends a name to the text, up to one of the terminators, which stays pending.
bool XmlCharStreamTokenizerBase::read_name(const ByteSet& terminators, const char* message) {
    for (;;) {
        if (pendingLength_ == 0 && !text_.empty()) {
            take_ready(name_bytes, dataEnd_);
        }
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

/// Passes over blanks, tabs and newlines and gives their number; -1 after a failure of the source.
std::int64_t XmlCharStreamTokenizerBase::skip_whitespace() {
    std::int64_t count = 0;
    while (fetch() && (pending_is(' ') || pending_is('\t') || pending_is('\n'))) {
        drop();
        ++count;
    }
    return state_ == XmlTokenizerState::Failed ? -1 : count;
}

/// Reads until the bytes of the literal have come in their order. Required: what stands between
/// them is lost, and only the end of the data (or a failure of the source) gives false.
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

/// The failure of a fetch: that of the source, already stored, or else the message for the end.
XmlTokenType XmlCharStreamTokenizerBase::no_char(const char* message,
                                                 const qncore::SourceLocation& location) {
    if (state_ == XmlTokenizerState::Failed) {
        return XmlTokenType::Error;
    }
    return syntax_failure(message, location);
}

XmlTokenType XmlCharStreamTokenizerBase::syntax_failure(const char* message,
                                                        const qncore::SourceLocation& location) {
    text_.clear();
    return fail(error::qnxml_tokenizer_syntaxError, message, location, {});
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
    return enter(XmlTokenizerState::Failed, XmlTokenType::Error);
}

} // namespace qnxml
