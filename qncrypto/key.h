#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace qncrypto {

/// Bytes of a key, a password or a plain text. The whole allocation is overwritten with zeros
/// before it is freed. Storage comes from `::operator new` in multiples of 8 bytes; the bytes from
/// size() to capacity() are always zero. A size that cannot be allocated throws std::bad_alloc and
/// changes nothing.
class Key {
  public:
    Key() noexcept = default;
    /// `size` zero bytes.
    explicit Key(std::size_t size);
    /// A copy of the bytes.
    Key(const unsigned char* bytes, std::size_t size);
    Key(const Key& other)
        : Key(other.data_, other.size_) {}
    Key(Key&& other) noexcept { swap(other); }
    Key& operator=(Key other) noexcept {
        swap(other);
        return *this;
    }
    ~Key();

    std::size_t capacity() const noexcept { return capacity_; }
    std::size_t size() const noexcept { return size_; }
    bool empty() const noexcept { return size_ == 0; }
    /// Null if nothing is allocated.
    unsigned char* data() noexcept { return data_; }
    const unsigned char* data() const noexcept { return data_; }

    /// Makes room for `size` bytes; never shrinks and never changes size().
    void reserve(std::size_t size);
    /// Appends zero bytes, or removes bytes at the end and overwrites them with zeros.
    void resize(std::size_t size);
    /// Replaces the content with a copy of the bytes, which may be its own.
    void assign(const unsigned char* bytes, std::size_t size);

    void swap(Key& other) noexcept;

    /// True if the bytes are equal. Not constant-time: do not compare a guess with a secret.
    friend bool operator==(const Key& left, const Key& right) noexcept;

  private:
    std::size_t capacity_ = 0;
    std::size_t size_ = 0;
    unsigned char* data_ = nullptr;
};

/// Overwrites the whole allocation of a text or a vector with zeros. The size stays.
void cleanse(std::string& text) noexcept;
void cleanse(std::vector<unsigned char>& bytes) noexcept;

} // namespace qncrypto
