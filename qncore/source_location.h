#pragma once

#include "qncore/source_string.h"

namespace qncore {

/// The place that raised an error.
struct SourceLocation {
    SourceString function; ///< qualified name with empty parentheses
    SourceString file;
    unsigned int line = 0;

    SourceLocation() noexcept = default;

    /// Borrows both literals.
    SourceLocation(const char* functionName, const char* fileName, unsigned int lineNumber) noexcept
        : function(functionName)
        , file(fileName)
        , line(lineNumber) {}
};

} // namespace qncore

/// The location of this line. `function` is the qualified name of the function, for instance
/// "qnfile::impl::FileImpl::read()".
#define QN_LOCATION(function) ::qncore::SourceLocation(function, __FILE__, __LINE__)
