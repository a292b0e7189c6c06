#pragma once

#include "platform/system_error.h"
#include "qncore/error_composer.h"
#include "qnfile/errors.h"

namespace qnfile::impl {

/// Composes an error about one value and delivers it to the slot, or throws it if that is null. The
/// system's error is nested; success means no cause.
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

/// Reports that a tree is too deep. Required: the cause is E2BIG by this number on every system.
inline void report_depth(qncore::ErrorInfoPtr* slot, const char* message,
                         const qncore::SourceLocation& location) {
    qncore::ErrorComposer(message).create_transfer_with_nested_errno(slot, error::qnfile_directory,
                                                                     location, 7);
}

/// True if a slot holds an error, after which no further step is taken.
inline bool holds_error(const qncore::ErrorInfoPtr* slot) noexcept {
    return slot != nullptr && *slot != nullptr;
}

} // namespace qnfile::impl
