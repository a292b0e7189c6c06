#include "qncore/strong_weak_ptr.h"

namespace qncore {

bool AtomicStrongWeakRefCount::lock_strong() noexcept {
    std::size_t count = strong_.load(std::memory_order_relaxed);
    while (count != 0) {
        if (strong_.compare_exchange_weak(count, count + 1, std::memory_order_acq_rel)) {
            return true;
        }
    }
    return false;
}

namespace impl {

void StrongWeakPtrCounterBase::release_strong() noexcept {
    if (count_.decrement_strong()) {
        release_object();
        release_weak();
    }
}

void StrongWeakPtrCounterBase::release_weak() noexcept {
    if (count_.decrement_weak()) {
        delete_counter();
    }
}

} // namespace impl

} // namespace qncore
