#pragma once

#include <cerrno>

namespace platform {

/// Calls a function of the system until no signal interrupts it, and returns its answer. Not for
/// close(), which releases the descriptor even when it is interrupted.
template <class Function>
auto retry(const Function& function) {
    auto answer = function();
    while (answer < 0 && errno == EINTR) {
        answer = function();
    }
    return answer;
}

} // namespace platform
