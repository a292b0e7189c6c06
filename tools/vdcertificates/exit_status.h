#pragma once

#include <stdexcept>
#include <string>

namespace tool {

/// What the program ends with.
enum ExitStatus {
    status_done = 0,
    status_failed = 1,   ///< the library failed, or `check` found something wrong
    status_usage = 2,    ///< the command line is wrong
    status_no_entry = 3, ///< the file has no such entry
};

/// A wrong use of the program: what() is the one line that says what is wrong.
struct UsageError : std::runtime_error {
    using runtime_error::runtime_error;
};

/// The work could not be done: what() is the cause.
struct Failure : std::runtime_error {
    using runtime_error::runtime_error;
};

} // namespace tool
