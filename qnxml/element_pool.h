#pragma once

#include "qnxml/element.h"

namespace qnxml::impl {

/// The elements of one reader that are free for reuse. It lives as long as the reader and every
/// element in use.
class ElementPool final : public qncore::RefCounted<qncore::NonAtomicRefCount> {
  public:
    ElementPool() = default;

    /// Returns a fresh element.
    qncore::RefCountPtr<XmlElement> take(XmlElementKind kind,
                                         const qncore::RefCountPtr<XmlElement>& parent);

    /// Takes back an element that nobody holds.
    void give_back(XmlElement* element) noexcept;

  private:
    ~ElementPool() override;

    XmlElement* free_ = nullptr;
    std::size_t room_ = 256; ///< how many more are kept
};

} // namespace qnxml::impl
