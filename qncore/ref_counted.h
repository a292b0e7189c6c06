#pragma once

#include <atomic>
#include <cstddef>
#include <type_traits>
#include <utility>

namespace qncore {

/// Reference count that may be shared between threads.
class AtomicRefCount {
  public:
    /// Adds a reference.
    void increment() noexcept { count_.fetch_add(1, std::memory_order_relaxed); }
    /// Returns true when the count reaches zero.
    bool decrement() noexcept { return count_.fetch_sub(1, std::memory_order_acq_rel) == 1; }
    /// True for the only reference.
    bool is_one() const noexcept { return count_.load(std::memory_order_acquire) == 1; }

  private:
    std::atomic<std::size_t> count_{0};
};

/// Reference count for objects that stay on one thread.
class NonAtomicRefCount {
  public:
    /// Adds a reference.
    void increment() noexcept { ++count_; }
    /// Drops a reference. Returns true if it was the last.
    bool decrement() noexcept { return --count_ == 0; }
    /// True for the only reference.
    bool is_one() const noexcept { return count_ == 1; }

  private:
    std::size_t count_ = 0;
};

/// Base of objects that RefCountPtr owns. A new object has no references yet.
template <class Count>
class RefCounted {
  public:
    RefCounted(const RefCounted&) = delete;
    RefCounted& operator=(const RefCounted&) = delete;

    /// Frees the object. Called by the pointer that drops the last reference.
    virtual void destroy() const noexcept { delete this; }

    /// Adds a reference.
    void increment() const noexcept { count_.increment(); }
    /// Drops a reference. Returns true if it was the last.
    bool decrement() const noexcept { return count_.decrement(); }
    /// True unless there is exactly one reference. Only the holder of a reference can rely on it.
    bool is_shared() const noexcept { return !count_.is_one(); }

  protected:
    RefCounted() noexcept = default;
    virtual ~RefCounted() = default;

  private:
    mutable Count count_;
};

/// A type whose pointers convert to pointers to `To`.
template <class From, class To>
concept PointerTo = std::is_convertible_v<From*, To*>;

/// Shared pointer to an object that counts its own references.
template <class T>
class RefCountPtr {
  public:
    using element_type = T; ///< what the pointer points to

    /// @{
    /// Points to the same object, with a reference of its own, or to none.
    constexpr RefCountPtr() noexcept = default;
    constexpr RefCountPtr(std::nullptr_t) noexcept {}
    explicit RefCountPtr(T* object) noexcept
        : object_(object) {
        acquire();
    }
    RefCountPtr(const RefCountPtr& other) noexcept
        : object_(other.object_) {
        acquire();
    }
    RefCountPtr(RefCountPtr&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)) {}

    template <PointerTo<T> Derived>
    RefCountPtr(const RefCountPtr<Derived>& other) noexcept
        : object_(other.get()) {
        acquire();
    }

    template <PointerTo<T> Derived>
    RefCountPtr(RefCountPtr<Derived>&& other) noexcept
        : object_(other.detach()) {}

    RefCountPtr& operator=(RefCountPtr other) noexcept {
        swap(other);
        return *this;
    }
    /// @}
    ~RefCountPtr() {
        if (object_ != nullptr && object_->decrement()) {
            object_->destroy();
        }
    }

    /// Exchanges the two objects.
    void swap(RefCountPtr& other) noexcept { std::swap(object_, other.object_); }
    /// Drops the reference and points to none.
    void reset() noexcept { RefCountPtr().swap(*this); }

    /// Releases the object without touching its count.
    T* detach() noexcept { return std::exchange(object_, nullptr); }

    /// @{
    /// The object; null and false if there is none.
    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }
    /// @}

    /// @{
    /// True if both point to the same object.
    friend bool operator==(const RefCountPtr& left, const RefCountPtr& right) noexcept {
        return left.object_ == right.object_;
    }
    friend bool operator==(const RefCountPtr& left, std::nullptr_t) noexcept {
        return left.object_ == nullptr;
    }
    /// @}

  private:
    void acquire() const noexcept {
        if (object_ != nullptr) {
            object_->increment();
        }
    }

    T* object_ = nullptr;
};

/// Makes an object and the first pointer to it.
template <class T, class... Arguments>
RefCountPtr<T> make_ref_counted(Arguments&&... arguments) {
    return RefCountPtr<T>(new T(std::forward<Arguments>(arguments)...));
}

} // namespace qncore
