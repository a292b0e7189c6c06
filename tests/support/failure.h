#pragma once

#include <string>

#include "qncore/error_exception.h"

namespace support {

/// The record of the ErrorException that the action throws; null when it throws none.
template <class Action>
qncore::ErrorInfoPtr error_of(const Action& action) {
    try {
        action();
    } catch (const qncore::ErrorException& exception) {
        return exception.info();
    }
    return {};
}

/// What the action throws: code, function and message, apart by blanks; empty when it throws
/// nothing.
template <class Action>
std::string failure_of(const Action& action) {
    const qncore::ErrorInfoPtr error = error_of(action);
    return error ? std::string(error->code().path()) + " " +
                       std::string(error->location().function.view()) + " " + error->text()
                 : "";
}

} // namespace support
