#include "qnxml/element_pool.h"

#include <utility>

namespace qnxml {

namespace {

constexpr std::size_t first_room = 8;
constexpr std::size_t most_kept_attributes = 32;
constexpr std::size_t most_kept_bytes = 256;

/// Frees a text whose memory is too large to be kept for reuse.
void free_if_large(std::string& text) noexcept {
    if (text.capacity() > most_kept_bytes) {
        text = std::string();
    }
}

/// The first result other than null for the element and the enclosing ones.
template <class Question>
const XmlAttribute* first_along_chain(const XmlElement* element, Question question) noexcept {
    const XmlAttribute* found = nullptr;
    while (element != nullptr && found == nullptr) {
        found = question(*element);
        element = element->parent().get();
    }
    return found;
}

const XmlAttribute* null_at_end(const XmlAttribute* found,
                                std::span<const XmlAttribute> attributes) noexcept {
    return found != attributes.data() + attributes.size() ? found : nullptr;
}

} // namespace

XmlElement::XmlElement() = default;
XmlElement::~XmlElement() = default;

void XmlElement::destroy() const noexcept {
    // Without recursion, since the chain may have any length.
    auto* element = const_cast<XmlElement*>(this); // elements are never created const
    while (element != nullptr) {
        XmlElement* const parent = element->parent_.detach();
        qncore::RefCountPtr<impl::ElementPool> pool;
        pool.swap(element->pool_);
        pool->give_back(element);
        element = parent != nullptr && parent->decrement() ? parent : nullptr;
    }
}

void XmlElement::clear() noexcept {
    for (std::size_t i = 0; i < attributeCount_; ++i) {
        free_if_large(attributes_[i].name_);
        free_if_large(attributes_[i].value_);
    }
    attributeCount_ = 0;
    if (attributes_.size() > most_kept_attributes) {
        attributes_ = {};
        distinctNames_ = 0;
    }
    bindsPrefixes_ = false;
    namespace_ = nullptr;
    defaultNamespace_ = nullptr;
    space_ = XmlSpace::not_set;
    if (kind_ == XmlElementKind::pi) {
        name_.clear(); // a target has no local part for set_name() to keep
    }
    free_if_large(name_);
}

XmlAttribute& XmlElement::next_attribute() {
    if (attributeCount_ == attributes_.size()) {
        attributes_.reserve(first_room);
        attributes_.emplace_back();
    }
    return attributes_[attributeCount_];
}

const XmlAttribute* XmlElement::find_attribute(std::string_view qualifiedName) const noexcept {
    const auto all = attributes();
    return null_at_end(qnxml::find_attribute(all.data(), all.data() + all.size(), qualifiedName),
                       all);
}

const XmlAttribute* XmlElement::find_attribute(std::string_view namespaceName,
                                               std::string_view localName) const noexcept {
    const auto all = attributes();
    return null_at_end(
        qnxml::find_attribute(all.data(), all.data() + all.size(), namespaceName, localName), all);
}

const XmlAttribute*
XmlElement::find_attribute_inherited(std::string_view qualifiedName) const noexcept {
    return first_along_chain(
        this, [=](const XmlElement& element) { return element.find_attribute(qualifiedName); });
}

const XmlAttribute*
XmlElement::find_attribute_inherited(std::string_view namespaceName,
                                     std::string_view localName) const noexcept {
    return first_along_chain(this, [=](const XmlElement& element) {
        return element.find_attribute(namespaceName, localName);
    });
}

const XmlAttribute*
XmlElement::find_xml_attribute_inherited(std::string_view localName) const noexcept {
    return find_attribute_inherited(xml_namespace(), localName);
}

namespace impl {

qncore::RefCountPtr<XmlElement> ElementPool::take(XmlElementKind kind,
                                                  const qncore::RefCountPtr<XmlElement>& parent) {
    XmlElement* element = free_;
    if (element != nullptr) {
        free_ = element->nextFree_;
        ++room_;
    } else {
        element = new XmlElement;
    }
    element->pool_ = qncore::RefCountPtr<ElementPool>(this);
    element->kind_ = kind;
    element->parent_ = parent;
    return qncore::RefCountPtr<XmlElement>(element);
}

void ElementPool::give_back(XmlElement* element) noexcept {
    if (room_ == 0) {
        delete element;
        return;
    }
    element->clear();
    element->nextFree_ = std::exchange(free_, element);
    --room_;
}

ElementPool::~ElementPool() {
    while (free_ != nullptr) {
        delete std::exchange(free_, free_->nextFree_);
    }
}

} // namespace impl

} // namespace qnxml
