#pragma once

#include <utility>

namespace qncrypto {

/// Owns an OpenSSL object: the pointer and the function that frees it.
///
///     const OpensslHandle bio(BIO_new(BIO_s_mem()), BIO_free_all);
template <class T>
class OpensslHandle {
  public:
    using Release = void (*)(T*);

    OpensslHandle(T* object, Release release) noexcept
        : object_(object)
        , release_(release) {}
    OpensslHandle(OpensslHandle&& other) noexcept
        : object_(other.detach())
        , release_(other.release_) {}
    OpensslHandle& operator=(OpensslHandle&&) = delete;
    ~OpensslHandle() {
        if (object_ != nullptr) {
            release_(std::exchange(object_, nullptr));
        }
    }

    T* get() const noexcept { return object_; }
    explicit operator bool() const noexcept { return object_ != nullptr; }

    /// Releases ownership and returns the object.
    T* detach() noexcept { return std::exchange(object_, nullptr); }

  private:
    T* object_;
    Release release_;
};

} // namespace qncrypto
