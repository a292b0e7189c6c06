#pragma once

#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "qncore/source_location.h"
#include "qncore/streams.h"
#include "qnxml/element.h"
#include "qnxml/entity_resolver.h"
#include "qnxml/errors.h"
#include "qnxml/tokenizer.h"

namespace qnxml {

enum class XmlNodeType : std::uint32_t {
    None = 0, ///< before the first read
    End = 1,
    Error = 2,
    XmlDeclaration = 3, ///< its pseudo-attributes are the current element's
    PI = 4,             ///< the target is the current element's name, the data the value
    Comment = 5,
    CDATA = 6,
    Text = 7, ///< character data with its references resolved
    Whitespace = 8,
    Element = 9, ///< start tag or empty tag
    EndElement = 10,
};

/// Writes the node type's name; a value without a name as "##UNKNOWN(value)##".
std::ostream& operator<<(std::ostream& stream, XmlNodeType type);

/// A pull parser: the caller requests one node after the other. Builds no tree, and copies a value
/// only on request.
///
/// Every failure is an ErrorException with a code below error.qnxml (with a failure of the source
/// nested) and is final: all further reads throw. What an entity resolver or a destination stream
/// throws passes through; the token at which it happened is lost.
///
/// Documents are UTF-8. The reader refuses these, although they are well-formed (XML 1.0, fifth
/// edition; Namespaces in XML 1.0):
/// - a declared version other than "1.0", a declared encoding other than the expected one (2.8);
/// - names that only the fifth edition allows, and names that begin with a colon (2.3);
/// - references to entities other than the five of 4.6, unless an IEntityResolver knows them, and
///   character references of more than 8 hexadecimal or 10 decimal digits (4.1);
/// - an `xml:space` other than "preserve" and "default" (2.10);
/// - values of more than `sm_maxValueSize` bytes.
///
/// It accepts these, although they are not well-formed:
/// - characters other than Char, such as control characters and NUL, also by reference (2.2); only
///   references to 0, to surrogates and to numbers above 0x10FFFF are refused;
/// - names that begin with a dot (2.3), and a NUL as the byte that ends a name;
/// - "]]>" in text (2.4) and targets such as "XML" (2.6);
/// - in an instruction, a "?" that does not end it: it is lost, and "??>" does not end it (2.6);
/// - any DOCTYPE, any number of them, before, between and after the root elements (2.8): skipped up
///   to the angle bracket that closes it, which may be one in quotes; it declares nothing;
/// - several root elements, or none (2.1);
/// - in an XML declaration, any other attributes and any order (2.8);
/// - characters within "/>", "?>" of an XML declaration, and "--", "[CDATA[" and "DOCTYPE" after
///   "<!": they are lost (2.5, 2.7, 2.8, 3.1);
/// - a numeric reference closed by any single byte, which is lost, in place of ";" (4.1);
/// - the end of the data inside a character, which is lost; after it, and after a final CR, the
///   last data may be read again;
/// - `xmlns:p=""`, which removes a binding; any use of the prefixes `xml` and `xmlns`; names with
///   several colons, of which the first one counts; two attributes with the same namespace and
///   local name (Namespaces, 2.1, 3, 4, 6.3).
class XmlReader {
  public:
    using Node = XmlNode;
    using Attribute = XmlAttribute;
    using Element = XmlElement;
    using ElementPtr = qncore::RefCountPtr<Element>;

    /// The largest number of bytes of a value, an attribute's value or an element's text.
    static constexpr std::size_t sm_maxValueSize = 0x8000000;

    /// Both must outlive the reader. The resolver may be null.
    explicit XmlReader(IXmlTokenizer* tokenizer, IEntityResolver* entityResolver = nullptr);
    XmlReader(const XmlReader&) = delete;
    XmlReader& operator=(const XmlReader&) = delete;
    ~XmlReader();

    /// Sets whether white space between markup is dropped (the default) or reported as nodes.
    void set_skip_whitespace(bool skip) noexcept { skipWhitespace_ = skip; }
    /// Sets the encoding that an XML declaration may name, compared by encoding_names_equal(); by
    /// default "UTF-8". Empty allows any.
    void set_expected_encoding(std::string_view encoding) { expectedEncoding_ = encoding; }

    /// Moves to the next node. Returns false at the end.
    bool read_next();

    /// Moves to the next element, of any name or of the given one. Returns false at the end.
    /// Namespace and local name as in XmlNode::matches().
    bool next_element();
    bool next_element_named(std::string_view namespaceName, std::string_view localName);
    bool next_element_named(std::string_view qualifiedName);

    /// Moves to the next child of `parent`; a null `parent` becomes the current element first.
    /// Returns false, at the parent's end tag, if there are no more, and if `parent` is not open.
    bool next_child_element(ElementPtr& parent);

    /// Moves to the end tag of the current element if that is an open one.
    void skip_current_element();
    /// Moves to the end tag of `element`; a null `element` becomes the current one first. Returns
    /// true there and for an element that is not open, false if `element` does not enclose the
    /// node.
    bool skip_to_element_end(ElementPtr& element);

    XmlNodeType node_type() const noexcept { return nodeType_; }

    /// The element of the node or around it; an element of kind `null` if there is none.
    ElementPtr current_element() const noexcept { return current_ ? current_ : nullElement_; }

    /// The value of the node, read as a whole on first use. The reference is valid until the next
    /// read. A value can be read in only one way: a second way throws, and ends the reading; only
    /// read_value_into_stream() and value_stream() may follow value().
    const std::string& value();
    /// The value of the node in pieces. available() is all ones while the size is unknown. Reading
    /// the data of an instruction to its end fails (required).
    qncore::IReadStream& value_stream() noexcept { return valueStream_; }
    /// Writes the value of the node.
    void read_value_into_stream(qncore::IWriteStream& stream);

    /// Moves to the end tag of the current element and returns the text of the element and all
    /// elements in it. Empty, without a move, at that end tag and if the element is not open.
    std::string read_element_text();

    /// Throw error.qnxml.reader.unexpected.element for the current element, which ends the reading.
    [[noreturn]] void throw_unexpected_element(const qncore::SourceLocation& location);
    [[noreturn]] void throw_unexpected_element(std::string_view expectedNamespace,
                                               std::string_view expectedLocalName,
                                               const qncore::SourceLocation& location);

  private:
    /// What the next read must do before it can look for a new token.
    enum class State : std::uint32_t {
        Start = 0,
        AtEnd = 1,
        Failed = 2,
        Content = 3,
        XmlDeclDone = 4,
        PiBody = 5,
        PiDone = 6,
        EmptyDone = 7,
        EndTagDone = 8,
        CommentBody = 9,
        CdataBody = 10,
        TextBody = 11,
        WhitespaceBody = 12,
    };

    enum class ValueState : std::uint32_t {
        Unread = 0,
        Buffered = 1,  ///< whole, in the buffer
        Streaming = 2, ///< partly read through a stream
        Consumed = 3,  ///< read through a stream
        Broken = 4,
    };

    class ValueReadStreamImpl final : public qncore::IReadStream {
      public:
        explicit ValueReadStreamImpl(XmlReader& reader) noexcept
            : reader_(&reader) {}
        std::uint64_t read(void* buffer, std::uint64_t count) override;
        std::uint64_t skip(std::uint64_t count) override;
        std::uint64_t available() override;

      private:
        void check_state();

        XmlReader* reader_;
    };

    struct Param {
        const char* name;
        std::string_view value;
    };
    using Params = std::initializer_list<Param>;

    /// The messages for an unexpected token at the start of the document and outside elements.
    struct Misplaced {
        XmlTokenType token;
        const char* atStart;
        const char* outside;
    };

    // Failures.
    [[noreturn]] void fail_with(const qncore::ErrorInfoPtr& error);
    [[noreturn]] void fail_with_tokenizers_error();
    [[noreturn]] void fail(std::string_view message, const qncore::SourceLocation& location,
                           Params params = {}, const qncore::ErrorCode& code = error::qnxml_reader);
    [[noreturn]] void fail_misplaced(const char* Misplaced::*message,
                                     const qncore::SourceLocation& location);
    [[noreturn]] void fail_unexpected_token(const qncore::SourceLocation& location);
    [[noreturn]] void throw_string_size_error();
    void append_limited(std::string& target, std::string_view piece) {
        if (target.size() + piece.size() > sm_maxValueSize) {
            throw_string_size_error();
        }
        target.append(piece);
    }

    // Tokens.
    XmlTokenType fetch_token() {
        if (!std::exchange(pushedBack_, false)) {
            lastToken_ = tokenizer_->next_token();
            if (lastToken_ == XmlTokenType::Error) {
                fail_with_tokenizers_error();
            }
        }
        return lastToken_;
    }
    void push_back() noexcept { pushedBack_ = true; }
    std::string_view token_text() const { return tokenizer_->token_text().view(); }
    void discard_chardata(XmlTokenType end);
    void discard_text();

    /// A node whose text is enclosed: the token that ends it, and the state after that.
    struct Section {
        State body;
        XmlTokenType end;
        State after;
    };
    static const Section* find_section(State state) noexcept;

    // Nodes.
    bool state_start();
    std::optional<bool> start_chardata();
    bool state_content(XmlTokenType token);
    bool begin_chardata();
    bool begin_chardata_outside();
    bool begin_node(XmlNodeType type, State state) noexcept;
    void read_xmldecl();
    void check_xmldecl();
    void read_pi();
    void read_starttag();
    void read_endtag();
    XmlTokenType read_attributes(Element& element);
    void read_attribute_value(std::string& value);
    bool add_attribute(Element& element);
    bool is_new_name(const Element& element);
    void leave_element();

    // Namespaces.
    void resolve_names();
    void resolve_attributes();
    XmlSpace xml_space(std::string_view value);
    void bind_prefixes();
    void unbind_prefixes();
    const std::string* find_namespace(std::string_view prefix) const noexcept;
    bool is_in_chain(const Element* element) const noexcept;

    // Values.
    void eval_char_ref(std::string* destination);
    void resolve_entity_ref(std::string* destination);
    bool eval_reference(std::string* destination);
    void read_value_into_buffer();
    void flush_value(qncore::IWriteStream& stream);
    void write_text(qncore::IWriteStream& stream);
    void write_section(const Section& section, qncore::IWriteStream& stream);
    std::uint64_t stream_read_aux(char* data, std::uint64_t size);
    bool stream_next_token();
    std::uint64_t copy_value(std::string_view source, char* data, std::uint64_t size);

    IXmlTokenizer* tokenizer_;
    IEntityResolver* entityResolver_;
    State state_ = State::Start;
    XmlNodeType nodeType_ = XmlNodeType::None;
    XmlTokenType lastToken_ = XmlTokenType::Unknown;
    bool pushedBack_ = false; ///< the last token is to be delivered again
    bool skipWhitespace_ = true;
    std::string expectedEncoding_ = "UTF-8";
    ValueState valueState_ = ValueState::Unread;
    std::uint64_t valuePosition_ = 0; ///< in the buffer or in the last token; all ones for none
    std::string value_;
    ValueReadStreamImpl valueStream_{*this};
    qncore::RefCountPtr<impl::ElementPool> pool_;
    ElementPtr nullElement_;
    ElementPtr current_;                                ///< the innermost; it holds the others
    std::set<std::string, std::less<>> attributeNames_; ///< of an element that has many
    /// The namespaces of each prefix, the innermost last. A look-up costs at most the logarithm of
    /// the document's length.
    std::map<std::string, std::vector<const std::string*>, std::less<>> bindings_;
    std::size_t idlePrefixes_ = 0; ///< how many of them are unbound and kept for reuse
};

} // namespace qnxml
