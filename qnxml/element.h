#pragma once

#include <span>
#include <vector>

#include "qncore/ref_counted.h"
#include "qnxml/attribute.h"

namespace qnxml {

namespace impl {
class ElementPool;
}

enum class XmlElementKind : std::uint32_t {
    null = 0, ///< returned where there is no element
    open = 1,
    empty = 2, ///< an empty tag
    pi = 3,    ///< holds the target of a processing instruction
    xml_declaration = 4,
};

/// The effective `xml:space` (XML 1.0, section 2.10).
enum class XmlSpace : std::uint32_t { not_set = 0, standard = 1, preserve = 2 };

/// An element with its attributes. It keeps the enclosing elements alive, also after the reader has
/// moved on or has been destroyed. The reference count is not thread-safe.
class XmlElement final : public qncore::RefCounted<qncore::NonAtomicRefCount>, public XmlNode {
  public:
    /// Returns the element, and each enclosing element that nobody else holds, to the pool.
    void destroy() const noexcept override;

    /// The enclosing element; null at the top.
    const qncore::RefCountPtr<XmlElement>& parent() const noexcept { return parent_; }
    XmlElementKind kind() const noexcept { return kind_; }
    XmlSpace space() const noexcept { return space_; }
    /// The value of the innermost `xmlns` attribute in scope; null without one.
    const std::string* default_namespace() const noexcept { return defaultNamespace_; }
    /// In document order, namespace declarations included.
    std::span<const XmlAttribute> attributes() const noexcept {
        return {attributes_.data(), attributeCount_};
    }

    /// The first attribute of that name, or null; `inherited` searches the element and then the
    /// enclosing ones, from the inside out. Namespace and local name as in XmlNode::matches().
    const XmlAttribute* find_attribute(std::string_view qualifiedName) const noexcept;
    const XmlAttribute* find_attribute(std::string_view namespaceName,
                                       std::string_view localName) const noexcept;
    const XmlAttribute* find_attribute_inherited(std::string_view qualifiedName) const noexcept;
    const XmlAttribute* find_attribute_inherited(std::string_view namespaceName,
                                                 std::string_view localName) const noexcept;
    /// The first attribute of the XML namespace, such as `xml:lang`, with that local name.
    const XmlAttribute* find_xml_attribute_inherited(std::string_view localName) const noexcept;

  private:
    friend class XmlReader;
    friend class impl::ElementPool;

    XmlElement();
    ~XmlElement() override;

    /// Resets the element for reuse; keeps its memory unless that is large.
    void clear() noexcept;

    /// Returns the attribute after the last one, to be filled; `++attributeCount_` adds it.
    XmlAttribute& next_attribute();

    qncore::RefCountPtr<XmlElement> parent_;
    XmlElementKind kind_ = XmlElementKind::null;
    XmlSpace space_ = XmlSpace::not_set;
    const std::string* defaultNamespace_ = nullptr;
    std::vector<XmlAttribute> attributes_; ///< past the count, those that wait for reuse
    std::size_t attributeCount_ = 0;
    std::size_t distinctNames_ = 0; ///< the names of the first so many are known to differ
    bool bindsPrefixes_ = false;    ///< one of its attributes binds a prefix
    qncore::RefCountPtr<impl::ElementPool> pool_; ///< null while the element is in the pool
    XmlElement* nextFree_ = nullptr;
};

} // namespace qnxml
