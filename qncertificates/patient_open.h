#pragma once

#include <chrono>
#include <thread>

#include "platform/system_error.h"
#include "qncore/error_exception.h"
#include "qncore/string_conversion.h"

namespace qncertificates {

/// True when the error says that another opener's share mode refuses the file.
inline bool is_refused_by_opener(const qncore::ErrorException& exception) {
    const qncore::ErrorInfoPtr& cause = exception.info()->nested();
    const std::string* number = cause ? cause->params().find("number") : nullptr;
    return number != nullptr &&
           *number == qncore::to_string(platform::sharing_violation().number());
}

/// Calls `open` until no other opener refuses the file, for about a second: a virus scanner, a
/// backup or a process that is just being killed lets go of a file within that time. Throws what
/// the last call threw.
template <class Open>
auto open_patiently(const Open& open) {
    using std::chrono::milliseconds;
    for (milliseconds pause(1); pause < milliseconds(1000); pause *= 2) {
        try {
            return open();
        } catch (const qncore::ErrorException& exception) {
            if (!is_refused_by_opener(exception)) {
                throw;
            }
        }
        std::this_thread::sleep_for(pause);
    }
    return open();
}

} // namespace qncertificates
