#pragma once

#include "qncore/ref_counted.h"
#include "qnxml/attribute.h"

namespace qnxml {

namespace impl {
class ElementPool;
}

enum class XmlElementKind : std::uint32_t {
    null = 0, ///< what stands for no element
    open = 1,
    empty = 2, ///< an empty tag
    pi = 3,    ///< holds the target of a processing instruction
    xml_declaration = 4,
};

/// The effective `xml:space` (XML 1.0, section 2.10).
enum class XmlSpace : std::uint32_t { not_set = 0, standard = 1, preserve = 2 };

/// An element with its attributes. It keeps the elements around it alive, so that whoever keeps a
/// pointer to it may go on asking about all of them when the reader has moved on or gone. The
/// count is for one thread.
class XmlElement final : public qncore::RefCounted<qncore::NonAtomicRefCount>, public XmlNode {
  public:
    /// Gives the element back to be used again; likewise each element around it that nobody else
    /// holds.
    void destroy() const noexcept override;

    /// The enclosing element; null at the top.
    const qncore::RefCountPtr<XmlElement>& parent() const noexcept { return parent_; }
    XmlElementKind kind() const noexcept { return kind_; }
    XmlSpace space() const noexcept { return space_; }
    /// The value of the `xmlns` attribute in whose scope the element lies; null without one.
    const std::string* default_namespace() const noexcept { return defaultNamespace_; }
    /// In document order, with the namespace declarations.
    std::span<const XmlAttribute> attributes() const noexcept { return attributes_.view(); }

    /// The first attribute of that name, or null; `Inherited` looks in the element first and then
    /// in the elements around it. Namespace and local name as in XmlNode::matches().
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

    XmlElement() = default;
    ~XmlElement() override = default;

    /// Makes the element as good as new, but for the memory that it keeps.
    void clear() noexcept;

    /// The namespace that a declaration in scope binds to the prefix; null when there is none.
    const std::string* find_namespace_prefix(std::string_view prefix) const noexcept;

    qncore::RefCountPtr<XmlElement> parent_;
    XmlElementKind kind_ = XmlElementKind::null;
    XmlSpace space_ = XmlSpace::not_set;
    const std::string* defaultNamespace_ = nullptr;
    XmlAttributes attributes_;
    /// The innermost of this element and those around it that binds a prefix; null when none does.
    const XmlElement* binder_ = nullptr;
    qncore::RefCountPtr<impl::ElementPool> pool_; ///< where it goes to; null while it is there
    XmlElement* nextFree_ = nullptr;
};

namespace impl {

/// The elements of one reader that are free to be used again. It lives as long as the reader and
/// each element that is in use.
class ElementPool final : public qncore::RefCounted<qncore::NonAtomicRefCount> {
  public:
    ElementPool() = default;

    /// A fresh element.
    qncore::RefCountPtr<XmlElement> take(XmlElementKind kind,
                                         qncore::RefCountPtr<XmlElement> parent);

    /// Takes an element that nobody holds.
    void give_back(XmlElement* element) noexcept;

  private:
    ~ElementPool() override;

    XmlElement* free_ = nullptr;
    std::size_t room_ = 256; ///< how many more are kept
};

} // namespace impl

} // namespace qnxml
