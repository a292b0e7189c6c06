#pragma once

#include <utility>

#include "qncore/ref_counted.h"

namespace qncore {

/// A pointer to an abstract interface that keeps the object alive: it holds the interface and a
/// RefCountPtr to the counted base of the same object.
template <class Interface, class Holder>
class InterfacePtr {
  public:
    InterfacePtr() noexcept = default;

    template <PointerTo<Interface> Object>
    explicit InterfacePtr(Object* object) noexcept
        : interface_(object)
        , holder_(object) {}

    template <PointerTo<Interface> Object>
    InterfacePtr(const RefCountPtr<Object>& object) noexcept
        : interface_(object.get())
        , holder_(object) {}

    template <PointerTo<Interface> Other>
    InterfacePtr(const InterfacePtr<Other, Holder>& other) noexcept
        : interface_(other.get())
        , holder_(other.holder()) {}

    /// Points to a part of the holder's object.
    InterfacePtr(Interface* part, Holder holder) noexcept
        : interface_(part)
        , holder_(std::move(holder)) {}

    InterfacePtr(const InterfacePtr&) noexcept = default;
    InterfacePtr(InterfacePtr&& other) noexcept
        : interface_(std::exchange(other.interface_, nullptr))
        , holder_(std::move(other.holder_)) {}
    InterfacePtr& operator=(InterfacePtr other) noexcept {
        std::swap(interface_, other.interface_);
        holder_.swap(other.holder_);
        return *this;
    }
    ~InterfacePtr() = default;

    Interface* get() const noexcept { return interface_; }
    Interface* operator->() const noexcept { return interface_; }
    Interface& operator*() const noexcept { return *interface_; }
    explicit operator bool() const noexcept { return interface_ != nullptr; }
    const Holder& holder() const noexcept { return holder_; }

  private:
    Interface* interface_ = nullptr;
    Holder holder_;
};

/// The holder of objects that threads may share.
using AtomicHolder = RefCountPtr<const RefCounted<AtomicRefCount>>;

} // namespace qncore
