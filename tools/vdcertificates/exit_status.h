#pragma once

#include <stdexcept>
#include <string>

namespace tool {

/// The exit status of the program.
enum ExitStatus {
    status_done = 0,
    status_failed = 1,   ///< the command failed, or `check` found a problem
    status_usage = 2,    ///< the command line is wrong
    status_no_entry = 3, ///< the file has no such entry
};

/// Wrong usage of the program: what() is one line that says what is wrong.
struct UsageError : std::runtime_error {
    using runtime_error::runtime_error;
};

/// A command failed: what() says why and what to do.
class Failure : public std::runtime_error {
  public:
    /// `code` is the code under which `check` reports the failure, `path` the file concerned.
    explicit Failure(const std::string& message, const char* code = "failed", std::string path = {})
        : runtime_error(message)
        , code_(code)
        , path_(std::move(path)) {}

    const char* code() const noexcept { return code_; }
    const std::string& path() const noexcept { return path_; }

  private:
    const char* code_;
    std::string path_;
};

/// The text of an exception with the whole chain of its causes.
std::string cause_of(const std::exception& exception);

} // namespace tool
