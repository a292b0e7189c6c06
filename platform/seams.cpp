#include "platform/seams.h"

namespace platform {

Seams& seams() noexcept {
    static Seams instance;
    return instance;
}

bool take_failure(Call call) noexcept {
    return seams().failing_call == call && seams().failures_left > 0 && seams().failures_left-- > 0;
}

} // namespace platform
