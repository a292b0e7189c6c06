#include "tests/qnxml/allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> taken{0};

} // namespace

std::size_t qnxml_test::allocations() noexcept {
    return taken;
}

// In place of the library's own, for the whole program.
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    ++taken;
    return std::malloc(size != 0 ? size : 1);
}

void* operator new(std::size_t size) {
    if (void* const block = operator new(size, std::nothrow)) {
        return block;
    }
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
