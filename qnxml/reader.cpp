// Moving from node to node, and the reader's failures.
#include "qnxml/reader.h"

#include <algorithm>
#include <array>
#include <sstream>

#include "qncore/error_exception.h"
#include "qnxml/element_pool.h"
#include "qnxml/enum_name.h"
#include "qnxml/reader_location.h"

namespace qnxml {

std::ostream& operator<<(std::ostream& stream, XmlNodeType type) {
    static constexpr std::array<std::string_view, 11> names{
        "None",  "End",  "Error",      "XmlDeclaration", "PI",        "Comment",
        "CDATA", "Text", "Whitespace", "Element",        "EndElement"};
    return impl::write_enum_name(stream, type, names);
}

XmlReader::XmlReader(IXmlTokenizer* tokenizer, IEntityResolver* entityResolver)
    : tokenizer_(tokenizer)
    , entityResolver_(entityResolver)
    , pool_(qncore::make_ref_counted<impl::ElementPool>())
    , nullElement_(pool_->take(XmlElementKind::null, {})) {}

XmlReader::~XmlReader() = default;

bool XmlReader::read_next() {
    value_.clear();
    valueState_ = ValueState::Unread;
    valuePosition_ = 0;
    for (;;) {
        switch (state_) {
        case State::Start:
            if (state_start()) {
                return state_ != State::AtEnd;
            }
            break;
        case State::AtEnd:
            fail("Read past end", QN_READER_LOCATION("read_next"));
        case State::Failed:
            fail("Cannot continue after error", QN_READER_LOCATION("read_next"));
        case State::Content:
            while (!state_content(fetch_token())) {
            }
            return state_ != State::AtEnd;
        case State::XmlDeclDone:
            current_.reset();
            state_ = State::Content;
            break;
        case State::PiDone:
        case State::EmptyDone:
        case State::EndTagDone:
            leave_element();
            state_ = State::Content;
            break;
        case State::PiBody:
        case State::CommentBody:
        case State::CdataBody: {
            const Section& section = *find_section(state_);
            discard_chardata(section.end);
            state_ = section.after;
            break;
        }
        case State::TextBody:
        case State::WhitespaceBody:
            discard_text();
            state_ = State::Content;
            break;
        default:
            fail("Invalid parser state", QN_READER_LOCATION("read_next"));
        }
    }
}

const XmlReader::Section* XmlReader::find_section(State state) noexcept {
    static constexpr std::array<Section, 3> sections{{
        {State::PiBody, XmlTokenType::PIEnd, State::PiDone},
        {State::CommentBody, XmlTokenType::CommentEnd, State::Content},
        {State::CdataBody, XmlTokenType::CDATAEnd, State::Content},
    }};
    const auto* const found =
        std::find_if(sections.begin(), sections.end(),
                     [state](const Section& section) { return section.body == state; });
    return found != sections.end() ? found : nullptr;
}

void XmlReader::leave_element() {
    if (current_->bindsPrefixes_) {
        unbind_prefixes();
    }
    current_ = current_->parent();
}

bool XmlReader::next_element() {
    while (read_next()) {
        if (nodeType_ == XmlNodeType::Element) {
            return true;
        }
    }
    return false;
}

bool XmlReader::next_element_named(std::string_view namespaceName, std::string_view localName) {
    while (next_element()) {
        if (current_->matches(namespaceName, localName)) {
            return true;
        }
    }
    return false;
}

bool XmlReader::next_element_named(std::string_view qualifiedName) {
    while (next_element()) {
        if (current_->qualified_name() == qualifiedName) {
            return true;
        }
    }
    return false;
}

bool XmlReader::is_in_chain(const Element* element) const noexcept {
    const Element* link = current_.get();
    while (link != nullptr && link != element) {
        link = link->parent().get();
    }
    return link != nullptr;
}

bool XmlReader::next_child_element(ElementPtr& parent) {
    if (!parent) {
        if (!current_) {
            return next_element();
        }
        parent = current_;
    }
    if (!is_in_chain(parent.get())) {
        return false;
    }
    const bool at_end = parent == current_ && nodeType_ == XmlNodeType::EndElement;
    if (at_end || parent->kind() != XmlElementKind::open) {
        return false;
    }
    while (read_next()) {
        if (nodeType_ == XmlNodeType::Element && current_->parent() == parent) {
            return true;
        }
        if (nodeType_ == XmlNodeType::EndElement && current_ == parent) {
            return false;
        }
    }
    return false;
}

void XmlReader::skip_current_element() {
    ElementPtr element = current_;
    skip_to_element_end(element);
}

bool XmlReader::skip_to_element_end(ElementPtr& element) {
    if (!element) {
        element = current_;
    }
    if (!element || !is_in_chain(element.get())) {
        return false;
    }
    const bool at_end = element == current_ && nodeType_ == XmlNodeType::EndElement;
    if (at_end || element->kind() != XmlElementKind::open) {
        return true;
    }
    while (read_next()) {
        if (nodeType_ == XmlNodeType::EndElement && current_ == element) {
            return true;
        }
    }
    return false;
}

std::string XmlReader::read_element_text() {
    std::string text;
    const ElementPtr element = current_;
    const bool at_end = nodeType_ == XmlNodeType::EndElement;
    if (!element || element->kind() != XmlElementKind::open || at_end) {
        return text;
    }
    while (read_next()) {
        switch (nodeType_) {
        case XmlNodeType::CDATA:
        case XmlNodeType::Text:
        case XmlNodeType::Whitespace:
            value();
            if (text.empty()) {
                text.swap(value_);
            } else {
                append_limited(text, value_);
            }
            break;
        case XmlNodeType::EndElement:
            if (current_ == element) {
                return text;
            }
            break;
        default:
            break;
        }
    }
    return text;
}

void XmlReader::throw_unexpected_element(const qncore::SourceLocation& location) {
    const ElementPtr element = current_element();
    const std::string* const name = element->namespace_name();
    fail("Unexpected element: Name='{@name}', Namespace=<{@namespace}>", location,
         {{"name", element->qualified_name()},
          {"namespace", name != nullptr ? *name : std::string_view()}},
         error::qnxml_reader_unexpected_element);
}

void XmlReader::throw_unexpected_element(std::string_view expectedNamespace,
                                         std::string_view expectedLocalName,
                                         const qncore::SourceLocation& location) {
    const ElementPtr element = current_element();
    const std::string* const name = element->namespace_name();
    fail("Unexpected element: Name='{@name}', Namespace=<{@namespace}>.  "
         "ExpectedLocalName='{@expectedLocalName}', ExpectedNamespace=<{@expectedNamespace}>",
         location,
         {{"name", element->qualified_name()},
          {"namespace", name != nullptr ? *name : std::string_view()},
          {"expectedLocalName", expectedLocalName},
          {"expectedNamespace", expectedNamespace}},
         error::qnxml_reader_unexpected_element);
}

/// Every failure passes here and is final.
void XmlReader::fail_with(const qncore::ErrorInfoPtr& error) {
    value_.clear();
    valueState_ = ValueState::Broken;
    state_ = State::Failed;
    nodeType_ = XmlNodeType::Error;
    qncore::throw_error(error);
}

void XmlReader::fail_with_tokenizers_error() {
    const qncore::ErrorInfoPtr error = tokenizer_->last_error();
    if (!error) {
        fail_unexpected_token(QN_READER_LOCATION("fetch_token"));
    }
    fail_with(error);
}

void XmlReader::fail(std::string_view message, const qncore::SourceLocation& location,
                     Params params, const qncore::ErrorCode& code) {
    qncore::ErrorParams all;
    const std::string text = location_message(tokenizer_->location(), message, &all);
    for (const Param& param : params) {
        all.insert(param.name, param.value);
    }
    fail_with(qncore::ErrorInfo::create(code, qncore::SourceString::copy_of(text), all, location));
}

void XmlReader::fail_unexpected_token(const qncore::SourceLocation& location) {
    std::ostringstream token;
    token << lastToken_;
    fail("Unexpected tokenizer token: {@token}", location, {{"token", token.str()}},
         error::qnxml_reader_unexpected_token);
}

void XmlReader::throw_string_size_error() {
    fail("Node value exceeds {@maxSize}bytes of character data",
         QN_READER_LOCATION("throw_string_size_error"),
         {{"maxSize", qncore::to_string(sm_maxValueSize)}}, error::qnxml_reader_unexpected_size);
}

/// Skips character data up to the end token.
void XmlReader::discard_chardata(XmlTokenType end) {
    while (fetch_token() != end) {
        if (lastToken_ != XmlTokenType::CharData) {
            fail_unexpected_token(QN_READER_LOCATION("discard_chardata"));
        }
    }
}

/// Skips the rest of a text node. A bad reference fails here as well.
void XmlReader::discard_text() {
    while (fetch_token() == XmlTokenType::CharData || eval_reference(nullptr)) {
    }
    push_back();
}

} // namespace qnxml
