#pragma once

#include <atomic>
#include <cstddef>
#include <memory>
#include <utility>

namespace qncore {

/// Two counts that begin at one: the strong references together own one weak reference.
class AtomicStrongWeakRefCount {
  public:
    void increment_strong() noexcept { strong_.fetch_add(1, std::memory_order_relaxed); }
    /// Return true if the count has reached zero.
    bool decrement_strong() noexcept {
        return strong_.fetch_sub(1, std::memory_order_acq_rel) == 1;
    }
    bool decrement_weak() noexcept { return weak_.fetch_sub(1, std::memory_order_acq_rel) == 1; }

  private:
    std::atomic<std::size_t> strong_{1};
    std::atomic<std::size_t> weak_{1};
};

/// Deletes an object of a complete type.
template <class T>
struct checked_deleter {
    void operator()(T* object) const noexcept {
        static_assert(sizeof(T) != 0, "the type must be complete");
        delete object;
    }
};

namespace impl {

/// Control block of a shared pointer with weak references.
class StrongWeakPtrCounterBase {
  public:
    StrongWeakPtrCounterBase() noexcept = default;
    StrongWeakPtrCounterBase(const StrongWeakPtrCounterBase&) = delete;
    StrongWeakPtrCounterBase& operator=(const StrongWeakPtrCounterBase&) = delete;
    virtual ~StrongWeakPtrCounterBase() = default;

    /// Frees the managed object.
    virtual void release_object() noexcept = 0;
    /// Frees the control block.
    virtual void delete_counter() noexcept { delete this; }

    void acquire_strong() noexcept { count_.increment_strong(); }
    void release_strong() noexcept;
    void release_weak() noexcept;

  private:
    AtomicStrongWeakRefCount count_;
};

template <class T, class Deleter>
class StrongWeakPtrCounter final : public StrongWeakPtrCounterBase {
  public:
    explicit StrongWeakPtrCounter(T* object) noexcept
        : object_(object) {}
    void release_object() noexcept override { Deleter()(std::exchange(object_, nullptr)); }

  private:
    T* object_;
};

} // namespace impl

/// Shared owner of an object that has no count of its own.
template <class T>
class StrongPtr {
  public:
    StrongPtr() noexcept = default;

    /// Takes ownership of the object, also if the control block cannot be allocated.
    explicit StrongPtr(T* object) {
        std::unique_ptr<T, checked_deleter<T>> guard(object);
        counter_ = new impl::StrongWeakPtrCounter<T, checked_deleter<T>>(object);
        object_ = guard.release();
    }
    StrongPtr(const StrongPtr& other) noexcept
        : object_(other.object_)
        , counter_(other.counter_) {
        if (counter_ != nullptr) {
            counter_->acquire_strong();
        }
    }
    StrongPtr(StrongPtr&& other) noexcept
        : object_(std::exchange(other.object_, nullptr))
        , counter_(std::exchange(other.counter_, nullptr)) {}
    StrongPtr& operator=(StrongPtr other) noexcept {
        std::swap(object_, other.object_);
        std::swap(counter_, other.counter_);
        return *this;
    }
    ~StrongPtr() {
        if (counter_ != nullptr) {
            counter_->release_strong();
        }
    }

    T* get() const noexcept { return object_; }
    T* operator->() const noexcept { return object_; }
    T& operator*() const noexcept { return *object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

  private:
    T* object_ = nullptr;
    impl::StrongWeakPtrCounterBase* counter_ = nullptr;
};

} // namespace qncore
