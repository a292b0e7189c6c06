#pragma once

#include <cerrno>

namespace platform {

/// Calls a system function until no signal interrupts it and returns its result. Not for close(),
/// which releases the descriptor even if it is interrupted.
template <class Function>
auto retry(const Function& function) {
    auto answer = function();
    while (answer < 0 && errno == EINTR) {
        answer = function();
    }
    return answer;
}

} // namespace platform
