#include "qnxml/element.h"

#include <utility>

namespace qnxml {

namespace {

/// The first answer other than null of the element and those around it.
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

void XmlElement::destroy() const noexcept {
    // One after the other, not one inside the other: the chain may be of any length.
    auto* element = const_cast<XmlElement*>(this); // every element is made as a variable
    while (element != nullptr) {
        XmlElement* const parent = element->parent_.detach();
        qncore::RefCountPtr<impl::ElementPool> pool;
        pool.swap(element->pool_);
        pool->give_back(element);
        element = parent != nullptr && parent->decrement() ? parent : nullptr;
    }
}

void XmlElement::clear() noexcept {
    attributes_.clear();
    localNameOffset_ = 0;
    namespace_ = nullptr;
    defaultNamespace_ = nullptr;
    binder_ = nullptr;
    space_ = XmlSpace::not_set;
    let_go_if_large(name_);
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

const std::string* XmlElement::find_namespace_prefix(std::string_view prefix) const noexcept {
    for (const XmlElement* element = binder_; element != nullptr;
         element = element->parent_ ? element->parent_->binder_ : nullptr) {
        for (const XmlAttribute& attribute : element->attributes()) {
            if (attribute.namespace_name() == &xmlns_namespace() &&
                attribute.local_name() == prefix) {
                // An empty value takes a binding away.
                return attribute.value().empty() ? nullptr : &attribute.value();
            }
        }
    }
    return nullptr;
}

namespace impl {

qncore::RefCountPtr<XmlElement> ElementPool::take(XmlElementKind kind,
                                                  qncore::RefCountPtr<XmlElement> parent) {
    XmlElement* element = free_;
    if (element != nullptr) {
        free_ = element->nextFree_;
        ++room_;
    } else {
        element = new XmlElement;
    }
    element->pool_ = qncore::RefCountPtr<ElementPool>(this);
    element->kind_ = kind;
    element->parent_ = std::move(parent);
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
