#include "qncore/strong_weak_ptr.h"

namespace qncore::impl {

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

} // namespace qncore::impl
