#pragma once

#include <exception>

#include "qncore/error_info.h"

namespace qncore {

/// The exception that the library throws. throw_error() and all that call it write the chain of
/// causes to the trace topic "System" at level 11; rethrow() does not.
class ErrorException : public std::exception {
  public:
    explicit ErrorException(ErrorInfoPtr info) noexcept
        : info_(std::move(info)) {}
    ~ErrorException() override;

    /// The rendered message, without its causes.
    const char* what() const noexcept override;

    /// Throws the same record again.
    [[noreturn]] virtual void rethrow() const;

    /// True if the carried code is `code` or below it. Causes do not count.
    bool matches(const ErrorCode& code) const noexcept;

    const ErrorInfoPtr& info() const noexcept { return info_; }

    /// Traces the record and throws it.
    [[noreturn]] static void throw_error(const ErrorInfoPtr& info);

  private:
    ErrorInfoPtr info_;
};

/// Throw a record of these parts. A message given as `const char*` is a literal.
[[noreturn]] void throw_error(const ErrorCode& code, const char* message,
                              const SourceLocation& location);
[[noreturn]] void throw_error(const ErrorCode& code, const char* message,
                              const SourceLocation& location, ErrorInfoPtr nested);
[[noreturn]] void throw_error(const ErrorCode& code, const char* message, ErrorParams params,
                              const SourceLocation& location);
[[noreturn]] void throw_error(const ErrorCode& code, SourceString message,
                              const SourceLocation& location);
[[noreturn]] void throw_error(const ErrorInfoPtr& info);
/// Throw ErrorInfo::from_winerror() and ErrorInfo::from_errno().
[[noreturn]] void throw_winerror(const SourceLocation& location, unsigned long number,
                                 bool withText);
[[noreturn]] void throw_errno(const SourceLocation& location, int number);

/// The rule for optional error slots: throws the record if the slot is null, else stores it in the
/// slot and traces nothing.
void deliver_error(ErrorInfoPtr* slot, ErrorInfoPtr info);

} // namespace qncore
