#include "tests/support/allocations.h"

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <limits>
#include <new>

namespace {

constexpr std::size_t header = 16; // holds the size of the block

std::atomic<std::size_t> taken{0};
std::atomic<std::size_t> first_failing{0};
std::atomic<std::size_t> last_failing{0};
std::atomic<const unsigned char*> watched{nullptr};
std::atomic<std::size_t> watched_size{0};
std::atomic<int> found{0};

void* allocate(std::size_t size) noexcept {
    const std::size_t number = ++taken;
    if (number >= first_failing && number <= last_failing) {
        return nullptr;
    }
    auto* const block = static_cast<unsigned char*>(std::malloc(size + header));
    if (block == nullptr) {
        return nullptr;
    }
    *reinterpret_cast<std::size_t*>(block) = size;
    return block + header;
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

// The forms for arrays call these.
void* operator new(std::size_t size) {
    void* const block = allocate(size);
    return block != nullptr ? block : throw std::bad_alloc();
}
// clang-format off
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return allocate(size); }
void operator delete(void* pointer) noexcept { give_back(pointer); }
void operator delete(void* pointer, std::size_t) noexcept { give_back(pointer); }
void operator delete(void* pointer, const std::nothrow_t&) noexcept { give_back(pointer); }
// clang-format on

namespace support {

std::size_t allocations() noexcept {
    return taken;
}

void fail_allocations(std::size_t number, Failing which) noexcept {
    first_failing = taken + number;
    last_failing =
        which == Failing::once ? first_failing.load() : std::numeric_limits<std::size_t>::max();
}

bool with_failing_allocation(std::size_t number, Failing which,
                             const std::function<void()>& action) {
    fail_allocations(number, which);
    action();
    last_failing = 0;
    return taken >= first_failing;
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
