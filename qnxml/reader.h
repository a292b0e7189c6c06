#pragma once

#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>

#include "qncore/source_location.h"
#include "qncore/streams.h"
#include "qnxml/element.h"
#include "qnxml/entity_resolver.h"
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

/// Writes the node type's name; a value without one as "##UNKNOWN(value)##".
std::ostream& operator<<(std::ostream& stream, XmlNodeType type);

/// The pull parser: the caller asks for the next node and looks at it. No tree is built, a value
/// that nobody asks for is not copied. Checks nesting and namespaces, skips DOCTYPE declarations.
///
/// Every failure is an ErrorException below error.qnxml, or the tokenizer's record as it is, and
/// is final: from then on each read throws.
class XmlReader {
  public:
    using Node = XmlNode;
    using Attribute = XmlAttribute;
    using Element = XmlElement;
    using ElementPtr = qncore::RefCountPtr<Element>;

    /// The most bytes of a value, an attribute's value or an element's text.
    static constexpr std::size_t sm_maxValueSize = 0x8000000;

    /// Both outlive the reader; the resolver may be null.
    explicit XmlReader(IXmlTokenizer* tokenizer, IEntityResolver* entityResolver = nullptr);
    XmlReader(const XmlReader&) = delete;
    XmlReader& operator=(const XmlReader&) = delete;
    ~XmlReader() = default;

    /// Whether white space between markup is dropped (so at first) or given as nodes.
    void set_skip_whitespace(bool skip) noexcept { skipWhitespace_ = skip; }
    /// What an XML declaration may name, compared loosely; "UTF-8" at first, empty for anything.
    void set_expected_encoding(std::string_view encoding) { expectedEncoding_ = encoding; }

    /// Moves to the next node; false exactly when it arrives at the end.
    bool read_next();

    /// Moves to the next element, of any name or of the given one; false at the end. Null and
    /// empty texts count as in XmlNode::matches().
    bool next_element();
    bool next_element_named(std::string_view namespaceName, std::string_view localName);
    bool next_element_named(std::string_view qualifiedName);

    /// Moves to the next child of `parent`, which becomes the current element when it is null.
    /// False, on the parent's end tag, when there is no more, and when `parent` is not open.
    bool next_child_element(ElementPtr& parent);

    /// Moves to the end tag of the current element, when that is an open one.
    void skip_current_element();
    /// Moves to the end tag of `element`, which becomes the current one when it is null. True there
    /// and for an element that is not open; false when `element` is not around the current node.
    bool skip_to_element_end(ElementPtr& element);

    XmlNodeType node_type() const noexcept { return nodeType_; }

    /// The element of the node or around it; an element of kind `null` when there is none.
    ElementPtr current_element() const noexcept { return current_ ? current_ : nullElement_; }

    /// The value of the node, read as a whole on first use.
    const std::string& value();
    /// The value of the node in pieces, in place of value(). Its available() is all ones while
    /// that is not known. The data of an instruction cannot be read to its end in this way.
    qncore::IReadStream& value_stream() noexcept { return valueStream_; }
    /// The value of the node, written out in place of value().
    void read_value_into_stream(qncore::IWriteStream& stream);

    /// The text of the current element and of all elements in it, up to its end tag, to which this
    /// moves; empty when the element is not an open one.
    std::string read_element_text();

    /// Reports the current element as not wanted, as an error that ends the reading.
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
        Streaming = 2, ///< on its way through a stream
        Consumed = 3,  ///< gone through a stream
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

    // Failures.
    [[noreturn]] void fail_with(const qncore::ErrorInfoPtr& error);
    [[noreturn]] void fail(const qncore::ErrorCode& code, std::string_view message, Params params,
                           const qncore::SourceLocation& location);
    [[noreturn]] void fail(std::string_view message, const qncore::SourceLocation& location);
    [[noreturn]] void fail(std::string_view message, Params params,
                           const qncore::SourceLocation& location);
    [[noreturn]] void fail_unexpected_token(const qncore::SourceLocation& location);
    [[noreturn]] void throw_string_size_error();
    void append_limited(std::string& target, std::string_view piece);

    // Tokens.
    XmlTokenType fetch_token();
    void push_back() noexcept { pushedBack_ = true; }
    std::string_view token_text() const { return tokenizer_->token_text().view(); }
    void discard_chardata(XmlTokenType end);
    void discard_text();

    /// A node whose text is enclosed: its end, and where the reader stands behind that.
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
    XmlTokenType read_attributes(XmlAttributes& attributes);
    void read_attribute_value(std::string& value);
    void resolve_names();
    XmlSpace xml_space(std::string_view value);
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
    bool pushedBack_ = false; ///< the last token is to come once more
    bool skipWhitespace_ = true;
    std::string expectedEncoding_ = "UTF-8";
    ValueState valueState_ = ValueState::Unread;
    std::uint64_t valuePosition_ = 0; ///< in the buffer or in the last token; all ones for none
    std::string value_;
    ValueReadStreamImpl valueStream_{*this};
    qncore::RefCountPtr<impl::ElementPool> pool_;
    ElementPtr nullElement_;
    ElementPtr current_; ///< innermost; the others hang on it
};

} // namespace qnxml
