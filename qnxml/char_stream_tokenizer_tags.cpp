// Tags and their attributes, the XML declaration.
#include "qnxml/char_stream_tokenizer.h"
#include "qnxml/tokenizer_location.h"

namespace qnxml {

namespace {

constexpr ByteSet double_quoted_bytes = ByteSet::plain_but("&<\"");
constexpr ByteSet double_quoted_ends = ByteSet::of("&\"");
constexpr ByteSet single_quoted_bytes = ByteSet::plain_but("&<'");
constexpr ByteSet single_quoted_ends = ByteSet::of("&'");

// Required: a NUL byte also terminates a name.
constexpr ByteSet after_attribute_name = ByteSet::of(std::string_view("\n\t =\0", 5));

constexpr const char* expecting_whitespace = "Expecting whitespace before attribute name";

} // namespace

XmlTokenType XmlCharStreamTokenizerBase::parse_xmldecl() {
    text_.clear();
    const bool blanks = skip_whitespace();
    if (pendingLength_ == 0) {
        return no_char("End of data in XML declaration", QN_TOKENIZER_LOCATION("parse_xmldecl"));
    }
    if (pending_is('?')) {
        if (expect_literal("?>")) {
            return enter(State::Content, XmlTokenType::XmldeclEnd);
        }
        return no_char("Invalid XML declaration, expecting '?>'",
                       QN_TOKENIZER_LOCATION("parse_xmldecl"));
    }
    if (!blanks) {
        return syntax_failure(expecting_whitespace, QN_TOKENIZER_LOCATION("parse_xmldecl"));
    }
    return parse_attrname();
}

XmlTokenType XmlCharStreamTokenizerBase::parse_starttag() {
    text_.clear();
    const bool blanks = skip_whitespace();
    if (pendingLength_ == 0) {
        return no_char("End of data in start tag declaration",
                       QN_TOKENIZER_LOCATION("parse_starttag"));
    }
    if (pending_is('>')) {
        drop();
        return enter(State::Content, XmlTokenType::StartTagEnd);
    }
    if (pending_is('/')) {
        if (expect_literal("/>")) {
            return enter(State::Content, XmlTokenType::StartTagEndEmpty);
        }
        return no_char("Invalid empty tag; expecting '/>'",
                       QN_TOKENIZER_LOCATION("parse_starttag"));
    }
    if (!blanks) {
        return syntax_failure(expecting_whitespace, QN_TOKENIZER_LOCATION("parse_starttag"));
    }
    return parse_attrname();
}

XmlTokenType XmlCharStreamTokenizerBase::parse_attrname() {
    text_.clear();
    if (!read_name(after_attribute_name, "Expecting attribute name")) {
        return XmlTokenType::Error;
    }
    if (!pending_is('=') || !is_ready() || (*cursor_ != '"' && *cursor_ != '\'')) {
        copy_text_in_place();
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
    case State::XmlDecl:
        return enter(State::XmlDeclValue, XmlTokenType::AttributeStart);
    case State::StartTag:
        return enter(State::StartTagValue, XmlTokenType::AttributeStart);
    default:
        return syntax_failure("Invalid parse state", QN_TOKENIZER_LOCATION("parse_attrname"));
    }
}

XmlTokenType XmlCharStreamTokenizerBase::parse_attrvalue() {
    const char quote = static_cast<char>(quote_);
    text_.clear();
    for (;;) {
        if (quote == '"' ? take_text<double_quoted_bytes, double_quoted_ends>()
                         : take_text<single_quoted_bytes, single_quoted_ends>()) {
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
    case State::XmlDeclValue:
        return enter(State::XmlDecl, XmlTokenType::AttributeEnd);
    case State::StartTagValue:
        return enter(State::StartTag, XmlTokenType::AttributeEnd);
    default:
        return syntax_failure("Invalid parse state", QN_TOKENIZER_LOCATION("parse_attrvalue"));
    }
}

} // namespace qnxml
