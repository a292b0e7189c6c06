#pragma once

#include "qnxml/element.h"

namespace qnxml::impl {

/// The elements of one reader that are free to be used again. It lives as long as the reader and
/// each element that is in use.
class ElementPool final : public qncore::RefCounted<qncore::NonAtomicRefCount> {
  public:
    ElementPool() = default;

    /// A fresh element.
    qncore::RefCountPtr<XmlElement> take(XmlElementKind kind,
                                         const qncore::RefCountPtr<XmlElement>& parent);

    /// Takes an element that nobody holds.
    void give_back(XmlElement* element) noexcept;

  private:
    ~ElementPool() override;

    XmlElement* free_ = nullptr;
    std::size_t room_ = 256; ///< how many more are kept
};

} // namespace qnxml::impl
