// Content of elements, the start of markup, references.
#include "qnuri/char_classes.h"
#include "qnxml/char_stream_tokenizer.h"
#include "qnxml/tokenizer_location.h"

namespace qnxml {

namespace {

using namespace std::string_view_literals;

constexpr ByteSet content_bytes = ByteSet::plain_but("&<");
constexpr ByteSet content_ends = ByteSet::of("&<");

// Terminators of a name. A NUL byte also terminates it (required).
constexpr ByteSet after_target = ByteSet::of("\n\t ?\0"sv);
constexpr ByteSet after_end_tag_name = ByteSet::of("\n\t >\0"sv);
constexpr ByteSet after_start_tag_name = ByteSet::of("\n\t />\0"sv);
constexpr ByteSet after_entity_name = ByteSet::of(";\0"sv);

constexpr std::size_t most_hex_digits = 8;
constexpr std::size_t most_decimal_digits = 10;

} // namespace

constexpr std::array<XmlCharStreamTokenizerBase::Declaration, 3>
    XmlCharStreamTokenizerBase::declarations{{
        {'-', "--", State::Comment, XmlTokenType::CommentStart},
        {'[', "[CDATA[", State::Cdata, XmlTokenType::CDATAStart},
        {'D', "DOCTYPE", State::Doctype, XmlTokenType::DoctypeStart},
    }};

XmlTokenType XmlCharStreamTokenizerBase::parse_content() {
    text_.clear();
    if (take_text<content_bytes, content_ends>()) {
        return XmlTokenType::CharData;
    }
    if (text_.empty() && accept_ready('<')) {
        return parse_markup();
    }
    return parse_content_by_characters();
}

XmlTokenType XmlCharStreamTokenizerBase::parse_content_by_characters() {
    for (;;) {
        if (!fetch()) {
            if (state_ == State::Failed) {
                return XmlTokenType::Error;
            }
            return text_.empty() ? enter(State::End, XmlTokenType::DocumentEnd)
                                 : XmlTokenType::CharData;
        }
        if (pending_is('&')) {
            return text_.empty() ? parse_reference() : XmlTokenType::CharData;
        }
        if (pending_is('<')) {
            return text_.empty() ? parse_markup() : XmlTokenType::CharData;
        }
        if (append_pending() || take_text<content_bytes, content_ends>()) {
            return XmlTokenType::CharData;
        }
    }
}

/// Continues after "<", which has been consumed or is pending.
XmlTokenType XmlCharStreamTokenizerBase::parse_markup() {
    drop();
    if (take_name(after_start_tag_name)) {
        return enter(State::StartTag, XmlTokenType::StartTagStart);
    }
    if (!fetch()) {
        return no_char("End of data in markup", QN_TOKENIZER_LOCATION("parse_content"));
    }
    if (pending_is('/')) {
        return parse_endtag();
    }
    if (pending_is('!')) {
        return parse_declaration();
    }
    if (pending_is('?')) {
        return parse_pi_target();
    }
    if (!read_name(after_start_tag_name, "Expecting start tag name")) {
        return XmlTokenType::Error;
    }
    return enter(State::StartTag, XmlTokenType::StartTagStart);
}

XmlTokenType XmlCharStreamTokenizerBase::parse_declaration() {
    if (!fetch_next()) {
        return no_char("End of data in markup", QN_TOKENIZER_LOCATION("parse_content"));
    }
    for (const Declaration& declaration : declarations) {
        if (pending_is(declaration.first)) {
            if (expect_literal(declaration.literal)) {
                return enter(declaration.state, declaration.token);
            }
            break;
        }
    }
    return no_char("Expecting '--', '[CDATA[', or 'DOCTYPE' after '<!'",
                   QN_TOKENIZER_LOCATION("parse_content"));
}

XmlTokenType XmlCharStreamTokenizerBase::parse_pi_target() {
    drop();
    if (!read_name(after_target, "Expecting processing instruction target name")) {
        return XmlTokenType::Error;
    }
    return token_text().view() == "xml" ? enter(State::XmlDecl, XmlTokenType::XmldeclStart)
                                        : enter(State::Pi, XmlTokenType::PIStart);
}

XmlTokenType XmlCharStreamTokenizerBase::parse_endtag() {
    drop();
    if (!read_name(after_end_tag_name, "Expecting end tag name")) {
        return XmlTokenType::Error;
    }
    if (!pending_is('>')) {
        copy_text_in_place();
        skip_whitespace();
        if (state_ == State::Failed || !fetch() || !pending_is('>')) {
            return no_char("Invalid character in end tag", QN_TOKENIZER_LOCATION("parse_content"));
        }
    }
    drop();
    return XmlTokenType::EndTag;
}

/// Continues after a pending "&", in content and in attribute values. Required: any single byte
/// closes a numeric reference.
XmlTokenType XmlCharStreamTokenizerBase::parse_reference() {
    constexpr const char* end_of_data = "End of data in entity or character reference";
    text_.clear();
    if (!fetch_next()) {
        return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_reference"));
    }
    const bool is_char_reference = pending_is('#');
    if (is_char_reference) {
        if (!fetch_next()) {
            return no_char(end_of_data, QN_TOKENIZER_LOCATION("parse_reference"));
        }
        if (!parse_char_reference()) {
            return XmlTokenType::Error;
        }
    } else if (!read_name(after_entity_name, "Expecting entity reference name")) {
        return XmlTokenType::Error;
    }
    fetch();
    if (pendingLength_ != 1) {
        return no_char("Invalid entity reference, expecting ';'",
                       QN_TOKENIZER_LOCATION("parse_reference"));
    }
    drop();
    return is_char_reference ? XmlTokenType::CharRef : XmlTokenType::EntityRef;
}

/// Reads the digits of a reference, and an "x" before them, to the text.
bool XmlCharStreamTokenizerBase::parse_char_reference() {
    const bool hex = pending_is('x');
    if (hex) {
        append_pending();
    }
    const auto digit = hex ? qnuri::chars::hex : qnuri::chars::digit;
    while (fetch() && pendingLength_ == 1 && qnuri::chars::is(pending_[0], digit)) {
        append_pending();
    }
    const std::size_t digits = text_.size() - (hex ? 1 : 0);
    if (digits >= 1 && digits <= (hex ? most_hex_digits : most_decimal_digits)) {
        return state_ != State::Failed;
    }
    no_char(hex ? "Invalid hex character reference" : "Invalid decimal character reference",
            QN_TOKENIZER_LOCATION("parse_reference"));
    return false;
}

} // namespace qnxml
