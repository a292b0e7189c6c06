#include "tests/support/allocations.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t header = 16; // holds the size of the block

std::atomic<std::size_t> taken{0};
std::atomic<std::size_t> failing{0}; // counts down to the `new` that fails
std::atomic<const unsigned char*> watched{nullptr};
std::atomic<std::size_t> watched_size{0};
std::atomic<int> found{0};

void* allocate(std::size_t size) noexcept {
    ++taken;
    if (failing != 0 && --failing == 0) {
        return nullptr;
    }
    auto* const block = static_cast<unsigned char*>(std::malloc(size + header));
    if (block == nullptr) {
        return nullptr;
    }
    *reinterpret_cast<std::size_t*>(block) = size;
    return block + header;
}

void* allocate_or_throw(std::size_t size) {
    void* const block = allocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void give_back(void* pointer) noexcept {
    if (pointer == nullptr) {
        return;
    }
    auto* const bytes = static_cast<unsigned char*>(pointer);
    if (const unsigned char* const secret = watched) {
        const std::size_t size = *reinterpret_cast<std::size_t*>(bytes - header);
        found += std::search(bytes, bytes + size, secret, secret + watched_size) != bytes + size;
    }
    std::free(bytes - header);
}

} // namespace

// clang-format off
void* operator new(std::size_t size) { return allocate_or_throw(size); }
void* operator new[](std::size_t size) { return allocate_or_throw(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* pointer) noexcept { give_back(pointer); }
void operator delete[](void* pointer) noexcept { give_back(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { give_back(pointer); }
void operator delete[](void* pointer, std::size_t) noexcept { give_back(pointer); }
void operator delete(void* pointer, const std::nothrow_t&) noexcept { give_back(pointer); }
void operator delete[](void* pointer, const std::nothrow_t&) noexcept { give_back(pointer); }
// clang-format on

namespace support {

std::size_t allocations() noexcept {
    return taken;
}

bool with_failing_allocation(std::size_t number, const std::function<void()>& action) {
    failing = number;
    action();
    return failing.exchange(0) == 0;
}

int blocks_given_back_with(const void* secret, std::size_t size,
                           const std::function<void()>& action) {
    found = 0;
    watched_size = size;
    watched = static_cast<const unsigned char*>(secret);
    action();
    watched = nullptr;
    return found;
}

} // namespace support
