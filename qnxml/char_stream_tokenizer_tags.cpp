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

constexpr bool is_quote(char byte) noexcept {
    return byte == '"' || byte == '\'';
}

} // namespace

XmlTokenType XmlCharStreamTokenizerBase::parse_xmldecl() {
    text_.clear();
    const bool blanks = skip_whitespace();
    if (pendingLength_ == 0) {
        return no_char("End of data in XML declaration", QN_TOKENIZER_LOCATION("parse_xmldecl"));
    }
    if (pending_is('?')) {
        return end_tag("?>", XmlTokenType::XmldeclEnd, "Invalid XML declaration, expecting '?>'",
                       QN_TOKENIZER_LOCATION("parse_xmldecl"));
    }
    return parse_attrname(blanks, QN_TOKENIZER_LOCATION("parse_xmldecl"));
}

XmlTokenType XmlCharStreamTokenizerBase::parse_starttag() {
    text_.clear();
    if (accept_ready('>')) {
        return enter(State::Content, XmlTokenType::StartTagEnd);
    }
    bool blanks = accept_ready(' ');
    if (blanks && take_name(after_attribute_name)) {
        return parse_after_attrname();
    }
    blanks |= skip_whitespace();
    if (pendingLength_ == 0) {
        return no_char("End of data in start tag declaration",
                       QN_TOKENIZER_LOCATION("parse_starttag"));
    }
    if (pending_is('>')) {
        drop();
        return enter(State::Content, XmlTokenType::StartTagEnd);
    }
    if (pending_is('/')) {
        return end_tag("/>", XmlTokenType::StartTagEndEmpty, "Invalid empty tag; expecting '/>'",
                       QN_TOKENIZER_LOCATION("parse_starttag"));
    }
    return parse_attrname(blanks, QN_TOKENIZER_LOCATION("parse_starttag"));
}

XmlTokenType XmlCharStreamTokenizerBase::end_tag(const char* literal, XmlTokenType end,
                                                 const char* message,
                                                 const impl::TokenizerPlace& place) {
    return expect_literal(literal) ? enter(State::Content, end) : no_char(message, place);
}

/// Reads from the end of an attribute's name up to the quote, which stays pending.
bool XmlCharStreamTokenizerBase::read_equals_sign() {
    const char* expecting = "Expecting '='";
    copy_text_in_place();
    skip_whitespace();
    if (pending_is('=')) {
        drop();
        skip_whitespace();
        if (pendingLength_ == 1 && is_quote(pending_[0])) {
            return true;
        }
        expecting = "Expecting '\"' or ''' to start attribute value";
    }
    if (pendingLength_ == 0) {
        no_char("End of data in attribute", QN_TOKENIZER_LOCATION("parse_attrname"));
    } else {
        syntax_failure(expecting, QN_TOKENIZER_LOCATION("parse_attrname"));
    }
    return false;
}

XmlTokenType XmlCharStreamTokenizerBase::parse_attrname(bool after_blanks,
                                                        const impl::TokenizerPlace& place) {
    if (!after_blanks) {
        return syntax_failure("Expecting whitespace before attribute name", place);
    }
    text_.clear();
    if (!read_name(after_attribute_name, "Expecting attribute name")) {
        return XmlTokenType::Error;
    }
    return parse_after_attrname();
}

/// Continues after an attribute's name, with its terminator pending.
XmlTokenType XmlCharStreamTokenizerBase::parse_after_attrname() {
    if (pending_is('=') && is_ready() && is_quote(*cursor_)) {
        fetch_next();
    } else if (!read_equals_sign()) {
        return XmlTokenType::Error;
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

bool XmlCharStreamTokenizerBase::take_attrvalue() {
    return quote_ == '"' ? take_text<double_quoted_bytes, double_quoted_ends>()
                         : take_text<single_quoted_bytes, single_quoted_ends>();
}

XmlTokenType XmlCharStreamTokenizerBase::parse_attrvalue() {
    text_.clear();
    if (take_attrvalue()) {
        return XmlTokenType::CharData;
    }
    if (text_.empty() && accept_ready(static_cast<char>(quote_))) {
        return end_attrvalue();
    }
    return parse_attrvalue_by_characters();
}

XmlTokenType XmlCharStreamTokenizerBase::parse_attrvalue_by_characters() {
    for (;;) {
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
        if (pending_is(static_cast<char>(quote_))) {
            break;
        }
        if (append_pending() || take_attrvalue()) {
            return XmlTokenType::CharData;
        }
    }
    if (!text_.empty()) {
        return XmlTokenType::CharData;
    }
    drop();
    return end_attrvalue();
}

/// Continues after the closing quote.
XmlTokenType XmlCharStreamTokenizerBase::end_attrvalue() {
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
