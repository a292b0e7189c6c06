// From tokens to nodes.
#include <algorithm>
#include <array>

#include "qnxml/element_pool.h"
#include "qnxml/encoding_names.h"
#include "qnxml/reader.h"
#include "qnxml/reader_location.h"
#include "qnxml/white_space.h"

namespace qnxml {

namespace {

constexpr std::string_view byte_order_mark = "\xEF\xBB\xBF";

constexpr std::string_view text_outside =
    "Unexpected non-whitespace content encountered outside scope of elements";

/// Updates `image`, the first bytes of a string, for a string to which `text` and a NUL byte are
/// written.
void lay_over(std::string& image, std::string_view text) {
    const std::size_t length = std::min(text.size(), image.size());
    image.replace(0, length, text.substr(0, length));
    if (length < image.size()) {
        image[length] = '\0';
    }
}

} // namespace

bool XmlReader::begin_node(XmlNodeType type, State state) noexcept {
    nodeType_ = type;
    state_ = state;
    return true;
}

/// Fails with the message for the last token, or as an unexpected token if it has none.
void XmlReader::fail_misplaced(const char* Misplaced::*message,
                               const qncore::SourceLocation& location) {
    static constexpr std::array<Misplaced, 3> all{{
        {XmlTokenType::CDATAStart, "Unexpected CDATA section",
         "Unexpected CDATA section outside scope of an element "},
        {XmlTokenType::EntityRef, "Unexpected entity reference",
         "Unexpected entity reference outside scope of elements"},
        {XmlTokenType::CharRef, "Unexpected character reference",
         "Unexpected character reference outside scope of elements"},
    }};
    for (const Misplaced& misplaced : all) {
        if (misplaced.token == lastToken_) {
            fail(misplaced.*message, location);
        }
    }
    fail_unexpected_token(location);
}

/// Reads up to the first node or to the start of the content. Returns true if there is a node.
bool XmlReader::state_start() {
    for (;;) {
        switch (fetch_token()) {
        case XmlTokenType::DocumentStart:
            break;
        case XmlTokenType::DocumentEnd:
            return begin_node(XmlNodeType::End, State::AtEnd);
        case XmlTokenType::XmldeclStart:
            read_xmldecl();
            return true;
        case XmlTokenType::DoctypeStart:
            discard_chardata(XmlTokenType::DoctypeEnd);
            state_ = State::Content;
            return false;
        case XmlTokenType::CommentStart:
            return begin_node(XmlNodeType::Comment, State::CommentBody);
        case XmlTokenType::PIStart:
            read_pi();
            return true;
        case XmlTokenType::StartTagStart:
            read_starttag();
            return true;
        case XmlTokenType::EndTag:
            read_endtag();
            return true;
        case XmlTokenType::CharData:
            if (const std::optional<bool> made_node = start_chardata()) {
                return *made_node;
            }
            break;
        default:
            fail_misplaced(&Misplaced::atStart, QN_READER_LOCATION("state_start"));
        }
    }
}

/// Takes white space or a byte order mark at the start of the document. Returns what state_start()
/// is to return, or nullopt if it must continue.
std::optional<bool> XmlReader::start_chardata() {
    const auto content = [this] {
        state_ = State::Content;
        return false;
    };
    if (is_white_space(token_text())) {
        if (skipWhitespace_) {
            return content();
        }
        push_back();
        return begin_node(XmlNodeType::Whitespace, State::WhitespaceBody);
    }
    std::string head(token_text());
    while (head.size() < byte_order_mark.size()) {
        if (fetch_token() != XmlTokenType::CharData) {
            fail("Unexpected non-whitespace content encountered",
                 QN_READER_LOCATION("state_start"));
        }
        append_limited(head, token_text());
    }
    const std::string_view rest = std::string_view(head).substr(byte_order_mark.size());
    if (!head.starts_with(byte_order_mark) || !is_white_space(rest)) {
        fail("Unexpected non-whitespace content in start of document (only UTF-8 BOM allowed)",
             QN_READER_LOCATION("state_start"));
    }
    if (rest.empty()) {
        return std::nullopt;
    }
    if (skipWhitespace_) {
        return content();
    }
    value_ = rest;
    return begin_node(XmlNodeType::Whitespace, State::WhitespaceBody);
}

/// Takes one token of the content. Returns true if it began a node.
bool XmlReader::state_content(XmlTokenType token) {
    const bool inside = static_cast<bool>(current_);
    switch (token) {
    case XmlTokenType::StartTagStart:
        read_starttag();
        return true;
    case XmlTokenType::EndTag:
        read_endtag();
        return true;
    case XmlTokenType::CharData:
        return inside ? begin_chardata() : begin_chardata_outside();
    case XmlTokenType::EntityRef:
    case XmlTokenType::CharRef:
        if (!inside) {
            fail_misplaced(&Misplaced::outside, QN_READER_LOCATION("state_content"));
        }
        push_back();
        return begin_node(XmlNodeType::Text, State::TextBody);
    case XmlTokenType::CDATAStart:
        if (!inside) {
            fail_misplaced(&Misplaced::outside, QN_READER_LOCATION("state_content"));
        }
        return begin_node(XmlNodeType::CDATA, State::CdataBody);
    case XmlTokenType::CommentStart:
        return begin_node(XmlNodeType::Comment, State::CommentBody);
    case XmlTokenType::PIStart:
        read_pi();
        return true;
    case XmlTokenType::DoctypeStart:
        if (inside) {
            // Required, although the message says the opposite of the fault.
            fail("Unexpected DOCTYPE declaration outside scope of elements",
                 QN_READER_LOCATION("state_content"));
        }
        discard_chardata(XmlTokenType::DoctypeEnd);
        return false;
    case XmlTokenType::XmldeclStart:
        fail("XML declaration only allowed at start of document",
             QN_READER_LOCATION("state_content"));
    case XmlTokenType::DocumentEnd:
        if (inside) {
            fail("Unexpected end of document; expecting closing tag for element '{@elementName}'",
                 QN_READER_LOCATION("state_content"),
                 {{"elementName", current_->qualified_name()}});
        }
        valueState_ = ValueState::Buffered;
        return begin_node(XmlNodeType::End, State::AtEnd);
    default:
        fail_unexpected_token(QN_READER_LOCATION("state_content"));
    }
}

/// Takes text inside an element. White space alone is not a node if white space is skipped; before
/// other text it is part of that text's value.
bool XmlReader::begin_chardata() {
    while (lastToken_ == XmlTokenType::CharData && current_->space() != XmlSpace::preserve &&
           is_white_space(token_text())) {
        append_limited(value_, token_text());
        fetch_token();
    }
    push_back();
    if (lastToken_ == XmlTokenType::CharData || lastToken_ == XmlTokenType::EntityRef ||
        lastToken_ == XmlTokenType::CharRef) {
        return begin_node(XmlNodeType::Text, State::TextBody);
    }
    if (!skipWhitespace_) {
        return begin_node(XmlNodeType::Whitespace, State::WhitespaceBody);
    }
    value_.clear();
    return false;
}

bool XmlReader::begin_chardata_outside() {
    if (!is_white_space(token_text())) {
        fail(text_outside, QN_READER_LOCATION("state_content"));
    }
    if (skipWhitespace_) {
        return false;
    }
    // Required: each further chunk counts as white space and has the length of the first. A shorter
    // one is followed by the previous content of the tokenizer's string.
    std::string chunk(token_text());
    append_limited(value_, chunk);
    while (fetch_token() == XmlTokenType::CharData) {
        lay_over(chunk, token_text());
        append_limited(value_, chunk);
    }
    if (lastToken_ == XmlTokenType::EntityRef || lastToken_ == XmlTokenType::CharRef) {
        fail(text_outside, QN_READER_LOCATION("state_content"));
    }
    push_back();
    return begin_node(XmlNodeType::Whitespace, State::WhitespaceBody);
}

void XmlReader::read_xmldecl() {
    const ElementPtr declaration = pool_->take(XmlElementKind::xml_declaration, current_);
    declaration->set_name("xml");
    if (read_attributes(*declaration) != XmlTokenType::XmldeclEnd) {
        fail_unexpected_token(QN_READER_LOCATION("read_xmldecl"));
    }
    current_ = declaration;
    check_xmldecl();
    begin_node(XmlNodeType::XmlDeclaration, State::XmlDeclDone);
}

void XmlReader::check_xmldecl() {
    bool hasVersion = false;
    for (const Attribute& attribute : current_->attributes()) {
        const std::string& value = attribute.value();
        if (attribute.qualified_name() == "version") {
            hasVersion = true;
            if (value != "1.0") {
                fail("Invalid version, expecting \"1.0\"", QN_READER_LOCATION("read_xmldecl"));
            }
        } else if (attribute.qualified_name() == "encoding" && !expectedEncoding_.empty() &&
                   !encoding_names_equal(expectedEncoding_.data(), expectedEncoding_.size(),
                                         value.data(), value.size())) {
            fail("Mismatched encodings. Expected: {@expected} Found: {@found}",
                 QN_READER_LOCATION("read_xmldecl"),
                 {{"expected", expectedEncoding_}, {"found", value}});
        }
    }
    if (!hasVersion) {
        fail("XML declaration must have version information", QN_READER_LOCATION("read_xmldecl"));
    }
}

void XmlReader::read_pi() {
    current_ = pool_->take(XmlElementKind::pi, current_);
    current_->name_ = token_text();
    current_->localNameOffset_ = 0;
    begin_node(XmlNodeType::PI, State::PiBody);
}

void XmlReader::read_endtag() {
    const std::string_view name = token_text();
    if (!current_) {
        fail("Unexpected end tag: " + std::string(name), QN_READER_LOCATION("read_endtag"));
    }
    if (current_->qualified_name() != name) {
        fail("End element name mismatch: Expecting='{@expectedName}', Found='{@foundName}'",
             QN_READER_LOCATION("read_endtag"),
             {{"expectedName", current_->qualified_name()}, {"foundName", name}});
    }
    value_.clear();
    valueState_ = ValueState::Buffered;
    begin_node(XmlNodeType::EndElement, State::EndTagDone);
}

} // namespace qnxml
