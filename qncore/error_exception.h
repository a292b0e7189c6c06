#pragma once

#include <exception>

#include "qncore/error_info.h"

namespace qncore {

/// The one exception of the library. throw_error() and everything made of it write the whole chain
/// of causes to the trace's topic "System" at level 11; rethrow() does not.
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

    /// Throws the record as it is.
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

/// The rule of an optional error slot: throws the record if the slot is null, else replaces what
/// the slot holds, without a trace.
void deliver_error(ErrorInfoPtr* slot, ErrorInfoPtr info);

} // namespace qncore
