// Tags and their attributes, the XML declaration.
#include "qnxml/char_stream_tokenizer.h"
#include "qnxml/tokenizer_location.h"

namespace qnxml {

namespace {

constexpr ByteSet double_quoted_bytes = ByteSet::plain_but("&<\"");
constexpr ByteSet single_quoted_bytes = ByteSet::plain_but("&<'");

// Required: a zero byte ends a name, too.
constexpr ByteSet behind_attribute_name = ByteSet::of(std::string_view("\n\t =\0", 5));

constexpr const char* expecting_whitespace = "Expecting whitespace before attribute name";

} // namespace

XmlTokenType XmlCharStreamTokenizerBase::parse_xmldecl() {
    text_.clear();
    const std::int64_t blanks = skip_whitespace();
    if (pendingLength_ == 0) {
        return no_char("End of data in XML declaration", QN_TOKENIZER_LOCATION("parse_xmldecl"));
    }
    if (pending_is('?')) {
        if (expect_literal("?>")) {
            return enter(XmlTokenizerState::Content, XmlTokenType::XmldeclEnd);
        }
        return no_char("Invalid XML declaration, expecting '?>'",
                       QN_TOKENIZER_LOCATION("parse_xmldecl"));
    }
    if (blanks == 0) {
        return syntax_failure(expecting_whitespace, QN_TOKENIZER_LOCATION("parse_xmldecl"));
    }
    return parse_attrname();
}

XmlTokenType XmlCharStreamTokenizerBase::parse_starttag() {
    text_.clear();
    const std::int64_t blanks = skip_whitespace();
    if (pendingLength_ == 0) {
        return no_char("End of data in start tag declaration",
                       QN_TOKENIZER_LOCATION("parse_starttag"));
    }
    if (pending_is('>')) {
        drop();
        return enter(XmlTokenizerState::Content, XmlTokenType::StartTagEnd);
    }
    if (pending_is('/')) {
        if (expect_literal("/>")) {
            return enter(XmlTokenizerState::Content, XmlTokenType::StartTagEndEmpty);
        }
        return no_char("Invalid empty tag; expecting '/>'",
                       QN_TOKENIZER_LOCATION("parse_starttag"));
    }
    if (blanks == 0) {
        return syntax_failure(expecting_whitespace, QN_TOKENIZER_LOCATION("parse_starttag"));
    }
    return parse_attrname();
}

XmlTokenType XmlCharStreamTokenizerBase::parse_attrname() {
    text_.clear();
    if (!read_name(behind_attribute_name, "Expecting attribute name")) {
        return XmlTokenType::Error;
    }
    skip_whitespace();
    if (pendingLength_ == 0) {
        return no_char("End of data in attribute", QN_TOKENIZER_LOCATION("parse_attrname"));
    }
    if (!pending_is('=')) {
        return syntax_failure("Expecting '='", QN_TOKENIZER_LOCATION("parse_attrname"));
    }
    drop();
    skip_whitespace();
    if (pendingLength_ == 0) {
        return no_char("End of data in attribute", QN_TOKENIZER_LOCATION("parse_attrname"));
    }
    if (!pending_is('"') && !pending_is('\'')) {
        return syntax_failure("Expecting '\"' or ''' to start attribute value",
                              QN_TOKENIZER_LOCATION("parse_attrname"));
    }
    quote_ = static_cast<std::uint8_t>(pending_[0]);
    drop();
    switch (state_) {
    case XmlTokenizerState::XmlDecl:
        return enter(XmlTokenizerState::XmlDeclValue, XmlTokenType::AttributeStart);
    case XmlTokenizerState::StartTag:
        return enter(XmlTokenizerState::StartTagValue, XmlTokenType::AttributeStart);
    default:
        return syntax_failure("Invalid parse state", QN_TOKENIZER_LOCATION("parse_attrname"));
    }
}

XmlTokenType XmlCharStreamTokenizerBase::parse_attrvalue() {
    const char quote = static_cast<char>(quote_);
    const ByteSet& plain = quote == '"' ? double_quoted_bytes : single_quoted_bytes;
    text_.clear();
    for (;;) {
        if (take_run(plain)) {
            return XmlTokenType::CharData;
        }
        if (!fetch()) {
            return no_char("End of data in attribute value",
                           QN_TOKENIZER_LOCATION("parse_attrvalue"));
        }
        if (pending_is('&')) {
            return text_.empty() ? parse_reference() : XmlTokenType::CharData;
        }
        if (pending_is('<')) {
            return syntax_failure("Invalid character ('<') in attribute value",
                                  QN_TOKENIZER_LOCATION("parse_attrvalue"));
        }
        if (pending_is(quote)) {
            break;
        }
        if (append_pending()) {
            return XmlTokenType::CharData;
        }
    }
    if (!text_.empty()) {
        return XmlTokenType::CharData;
    }
    drop();
    switch (state_) {
    case XmlTokenizerState::XmlDeclValue:
        return enter(XmlTokenizerState::XmlDecl, XmlTokenType::AttributeEnd);
    case XmlTokenizerState::StartTagValue:
        return enter(XmlTokenizerState::StartTag, XmlTokenType::AttributeEnd);
    default:
        return syntax_failure("Invalid parse state", QN_TOKENIZER_LOCATION("parse_attrvalue"));
    }
}

} // namespace qnxml
