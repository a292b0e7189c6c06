#include "platform/seams.h"

namespace platform {

Seams& seams() noexcept {
    static Seams instance;
    return instance;
}

bool take_failure(Call call) noexcept {
    Call expected = call;
    return seams().failing_call.compare_exchange_strong(expected, Call::none);
}

} // namespace platform
