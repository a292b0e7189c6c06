#include "qncrypto/key.h"

#include <algorithm>
#include <limits>
#include <new>
#include <utility>

#include <openssl/crypto.h>

namespace qncrypto {
namespace {

constexpr std::size_t granularity = 8;

/// The allocation for `size` bytes. Refuses sizes that no object can have, such as a negative count
/// converted to a size, before rounding could overflow.
std::size_t round_up(std::size_t size) {
    constexpr std::size_t largest = std::numeric_limits<std::ptrdiff_t>::max() - granularity;
    if (size > largest) {
        throw std::bad_alloc();
    }
    return (size + granularity - 1) / granularity * granularity;
}

unsigned char* allocate(std::size_t capacity) {
    return capacity == 0 ? nullptr : static_cast<unsigned char*>(::operator new(capacity));
}

template <class Buffer>
void cleanse_allocation(Buffer& buffer) noexcept {
    const std::size_t size = buffer.size();
    buffer.resize(buffer.capacity()); // allocates nothing
    OPENSSL_cleanse(buffer.data(), buffer.size());
    buffer.resize(size);
}

} // namespace

Key::Key(std::size_t size)
    : capacity_(round_up(size))
    , size_(size)
    , data_(allocate(capacity_)) {
    std::fill_n(data_, capacity_, static_cast<unsigned char>(0));
}

Key::Key(const unsigned char* bytes, std::size_t size)
    : Key(size) {
    std::copy_n(bytes, size, data_);
}

Key::~Key() {
    OPENSSL_cleanse(data_, capacity_);
    ::operator delete(data_);
}

void Key::reserve(std::size_t size) {
    if (round_up(size) <= capacity_) {
        return;
    }
    Key grown(size);
    std::copy_n(data_, capacity_, grown.data_);
    grown.size_ = size_;
    swap(grown);
}

void Key::resize(std::size_t size) {
    if (size > size_) {
        reserve(size);
    } else if (size < size_) {
        std::fill(data_ + size, data_ + size_, static_cast<unsigned char>(0));
    }
    size_ = size;
}

void Key::assign(const unsigned char* bytes, std::size_t size) {
    Key(bytes, size).swap(*this);
}

void Key::swap(Key& other) noexcept {
    std::swap(capacity_, other.capacity_);
    std::swap(size_, other.size_);
    std::swap(data_, other.data_);
}

bool operator==(const Key& left, const Key& right) noexcept {
    return std::equal(left.data_, left.data_ + left.size_, right.data_, right.data_ + right.size_);
}

void cleanse(std::string& text) noexcept {
    cleanse_allocation(text);
}

void cleanse(std::vector<unsigned char>& bytes) noexcept {
    cleanse_allocation(bytes);
}

} // namespace qncrypto
