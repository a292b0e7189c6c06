#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace qnxml {

/// The two namespaces that need no declaration (Namespaces in XML 1.0, section 3).
const std::string& xml_namespace();
const std::string& xmlns_namespace();

/// The name of an element or an attribute: qualified name, local part, namespace.
class XmlNode {
  public:
    const std::string& qualified_name() const noexcept { return name_; }

    /// Where the local name begins in the qualified name: behind its first colon, else 0.
    std::size_t local_name_offset() const noexcept { return localNameOffset_; }

    /// What stands behind the first colon, or the whole name.
    std::string_view local_name() const noexcept {
        return std::string_view(name_).substr(localNameOffset_);
    }
    /// What stands before the first colon; empty without one.
    std::string_view prefix() const noexcept {
        return {name_.data(), localNameOffset_ == 0 ? 0 : localNameOffset_ - 1};
    }

    /// Null without a namespace. The string is one of the two above or the value of an attribute
    /// of this or an enclosing element, and lives as long as the element.
    const std::string* namespace_name() const noexcept { return namespace_; }

    /// Compares both parts of the name. A namespace text of null (a default string_view) matches
    /// every namespace, an empty one the absence of a namespace; an empty local name matches all.
    bool matches(std::string_view namespaceName, std::string_view localName) const noexcept;

    bool is_xml_namespace() const noexcept;

  protected:
    XmlNode() = default;
    XmlNode(const XmlNode&) = default;
    XmlNode(XmlNode&&) = default;
    XmlNode& operator=(const XmlNode&) = default;
    XmlNode& operator=(XmlNode&&) = default;
    ~XmlNode() = default;

  private:
    friend class XmlAttributes;
    friend class XmlElement;
    friend class XmlReader;

    /// Lets go of a text whose memory is too much to be kept for the next use.
    static void let_go_if_large(std::string& text) noexcept;

    /// Sets the name and finds its local part. False when nothing stands behind the colon.
    bool set_name(std::string_view qualifiedName);

    std::string name_;
    std::size_t localNameOffset_ = 0;
    const std::string* namespace_ = nullptr;
};

class XmlAttribute final : public XmlNode {
  public:
    /// References are resolved, literal white space is made blanks (XML 1.0, section 3.3.3).
    const std::string& value() const noexcept { return value_; }

    /// The byte that opened the value in the document, a double or a single quote.
    std::uint8_t quote() const noexcept { return quote_; }

  private:
    friend class XmlAttributes;
    friend class XmlReader;

    std::string value_;
    std::uint8_t quote_ = 0;
};

/// Searches in document order; `end` when there is none.
const XmlAttribute* find_attribute(const XmlAttribute* begin, const XmlAttribute* end,
                                   std::string_view qualifiedName) noexcept;
const XmlAttribute* find_attribute(const XmlAttribute* begin, const XmlAttribute* end,
                                   std::string_view namespaceName,
                                   std::string_view localName) noexcept;

/// The attributes of one element in document order. What was used once is kept for the next
/// element, so that filling it again allocates nothing.
class XmlAttributes {
  public:
    XmlAttributes() = default;
    XmlAttributes(const XmlAttributes&) = delete;
    XmlAttributes& operator=(const XmlAttributes&) = delete;
    ~XmlAttributes() = default;

    std::span<const XmlAttribute> view() const noexcept { return {slots_.data(), count_}; }
    std::span<XmlAttribute> view() noexcept { return {slots_.data(), count_}; }

    /// The attribute behind the last one, not in the view yet, to be filled anew.
    XmlAttribute& prepare();

    /// Takes the prepared attribute into the view, in the namespace of its prefix when that is a
    /// reserved one. False, and nothing taken, when the view has its qualified name.
    bool add_attribute();

    /// Whether one of them binds a prefix.
    bool bind_prefixes() const noexcept { return bindPrefixes_; }

    /// Empties the view, and lets go of what is too large to be kept.
    void clear() noexcept;

  private:
    /// Orders slots by their qualified names.
    struct ByName {
        const std::vector<XmlAttribute>* slots;
        bool operator()(std::size_t left, std::size_t right) const noexcept {
            return (*slots)[left].qualified_name() < (*slots)[right].qualified_name();
        }
    };

    bool is_new_name();

    std::vector<XmlAttribute> slots_;
    std::size_t count_ = 0;
    bool bindPrefixes_ = false;
    std::set<std::size_t, ByName> names_{ByName{&slots_}}; ///< empty while there are few
};

} // namespace qnxml
