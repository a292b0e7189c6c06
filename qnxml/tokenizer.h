#pragma once

#include <cstdint>
#include <iosfwd>

#include "qncore/error_info.h"
#include "qncore/string_slice.h"
#include "qnxml/xml_location.h"

namespace qnxml {

/// The tokens of a document. The tokenizer does not track nesting: a text is any number of
/// `CharData` tokens, and the tokens around them show what it belongs to.
enum class XmlTokenType : std::uint32_t {
    Unknown = 0, ///< never produced
    DocumentStart = 1,
    DocumentEnd = 2,
    Error = 3,
    XmldeclStart = 4, ///< text: the target
    XmldeclEnd = 5,
    DoctypeStart = 6,
    DoctypeEnd = 7,
    CommentStart = 8,
    CommentEnd = 9,
    PIStart = 10, ///< text: the target
    PIEnd = 11,
    CDATAStart = 12,
    CDATAEnd = 13,
    StartTagStart = 14, ///< text: the element's qualified name
    StartTagEnd = 15,
    StartTagEndEmpty = 16,
    EndTag = 17,         ///< text: the element's qualified name
    AttributeStart = 18, ///< text: the attribute's qualified name
    AttributeEnd = 19,
    /// Text: a chunk, never empty, of at most 1023 bytes. Only a run of "]" in a CDATA section is
    /// one chunk of any length.
    CharData = 20,
    EntityRef = 21, ///< text: the name alone
    CharRef = 22,   ///< text: the digits, with a leading "x" for hexadecimal
};

/// Writes the token's name; a value without a name as "##UNKNOWN(value)##".
std::ostream& operator<<(std::ostream& stream, XmlTokenType token);

/// Turns a document into tokens. A fault of the document and a std::exception of its source are the
/// token `Error`, which is final; std::bad_alloc and exceptions of other types pass through.
class IXmlTokenizer {
  public:
    /// Moves to the next token.
    virtual XmlTokenType next_token() = 0;
    /// The text of the current token, valid until the next call of next_token(). Unspecified for
    /// `Error`, `CommentEnd`, `PIEnd` and `CDATAEnd`.
    virtual qncore::StringSlice<const char*> token_text() const = 0;
    /// The failure; null if there was none.
    virtual qncore::ErrorInfoPtr last_error() const = 0;
    /// The byte that opened the current attribute value, a double or a single quote.
    virtual std::uint8_t attribute_quote() const = 0;
    /// The position after all consumed data, including a character held back for the next token.
    virtual XmlLocation location() const = 0;

  protected:
    ~IXmlTokenizer() = default;
};

} // namespace qnxml
