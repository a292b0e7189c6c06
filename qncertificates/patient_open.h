#pragma once

#include <algorithm>
#include <chrono>
#include <thread>

#include "platform/system_error.h"
#include "qncore/error_exception.h"
#include "qncore/string_conversion.h"

namespace qncertificates {

/// True if the open failed with a sharing violation.
inline bool is_refused_by_opener(const qncore::ErrorException& exception) {
    const qncore::ErrorInfoPtr& cause = exception.info()->nested();
    const std::string* number = cause ? cause->params().find("number") : nullptr;
    return number != nullptr &&
           *number == qncore::to_string(platform::sharing_violation().number());
}

/// Calls `open`, and for up to a second again while it fails with a sharing violation: virus
/// scanners, backups and processes that are being killed close the file within that time. Throws
/// what the last call threw.
template <class Open>
auto open_patiently(const Open& open) {
    using std::chrono::steady_clock;
    const auto end = steady_clock::now() + std::chrono::seconds(1);
    for (steady_clock::duration pause = std::chrono::milliseconds(1);; pause *= 2) {
        try {
            return open();
        } catch (const qncore::ErrorException& exception) {
            pause = std::min(pause, end - steady_clock::now());
            if (!is_refused_by_opener(exception) || pause <= pause.zero()) {
                throw;
            }
        }
        std::this_thread::sleep_for(pause);
    }
}

} // namespace qncertificates
