#pragma once

#include "platform/system_error.h"
#include "qncore/error_composer.h"

namespace qnfile::impl {

/// Composes an error about one value and hands it to the slot, or throws it where that is null.
/// The system's error is nested; success stands for no cause.
template <class Value>
void report(qncore::ErrorInfoPtr* slot, const qncore::ErrorCode& code, const char* message,
            const char* parameter, const Value& value, const qncore::SourceLocation& location,
            platform::SystemError cause = {}) {
    qncore::ErrorComposer(message)
        .param(parameter, value)
        .create_transfer(slot, code, location,
                         cause ? qncore::ErrorInfo::from_system_error(location, cause)
                               : qncore::ErrorInfoPtr());
}

/// Whether a slot holds an error, so that a row of steps ends.
inline bool holds_error(const qncore::ErrorInfoPtr* slot) noexcept {
    return slot != nullptr && *slot != nullptr;
}

} // namespace qnfile::impl
