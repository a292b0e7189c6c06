#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace qnxml {

/// The two namespaces that need no declaration (Namespaces in XML 1.0, section 3).
const std::string& xml_namespace();
const std::string& xmlns_namespace();

/// As a namespace to search for, matches every namespace and the absence of one.
inline constexpr std::string_view any_namespace{};

/// The name of an element or an attribute: qualified name, local part, namespace.
class XmlNode {
  public:
    const std::string& qualified_name() const noexcept { return name_; }

    /// The position of the local name in the qualified name: after its first colon, else 0.
    std::size_t local_name_offset() const noexcept { return localNameOffset_; }

    /// The part after the first colon, or the whole name.
    std::string_view local_name() const noexcept {
        return std::string_view(name_).substr(localNameOffset_);
    }
    /// The part before the first colon; empty without one.
    std::string_view prefix() const noexcept {
        return {name_.data(), localNameOffset_ == 0 ? 0 : localNameOffset_ - 1};
    }

    /// Null without a namespace. The string is one of the two above or the value of an attribute
    /// of this or an enclosing element, and is valid while the element lives.
    const std::string* namespace_name() const noexcept { return namespace_; }

    /// Compares both parts of the name. A namespace without data (`any_namespace`, a default
    /// string_view) matches every namespace, an empty text only the absence of one. An empty local
    /// name matches every local name.
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
    friend class XmlElement;
    friend class XmlReader;

    /// Sets the name and finds its local part. Returns true if the name has changed.
    bool set_name(std::string_view qualifiedName);
    /// True unless the first colon is the last character.
    bool has_local_name() const noexcept {
        return localNameOffset_ == 0 || localNameOffset_ != name_.size();
    }

    std::string name_;
    std::size_t localNameOffset_ = 0;
    const std::string* namespace_ = nullptr;
};

class XmlAttribute final : public XmlNode {
  public:
    /// The value with its references resolved and its literal white space replaced by blanks
    /// (XML 1.0, section 3.3.3).
    const std::string& value() const noexcept { return value_; }

    /// The byte that opened the value in the document, a double or a single quote.
    std::uint8_t quote() const noexcept { return quote_; }

  private:
    friend class XmlElement;
    friend class XmlReader;

    std::string value_;
    std::uint8_t quote_ = 0;
};

/// The first attribute of that name in document order; `end` if there is none. Namespace and local
/// name as in XmlNode::matches().
const XmlAttribute* find_attribute(const XmlAttribute* begin, const XmlAttribute* end,
                                   std::string_view qualifiedName) noexcept;
const XmlAttribute* find_attribute(const XmlAttribute* begin, const XmlAttribute* end,
                                   std::string_view namespaceName,
                                   std::string_view localName) noexcept;

} // namespace qnxml
