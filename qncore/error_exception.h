#pragma once

#include <exception>

#include "qncore/error_info.h"

namespace qncore {

/// The one exception of the library. Every throw is told to the trace's system topic at level 11.
class ErrorException : public std::exception {
  public:
    explicit ErrorException(ErrorInfoPtr info) noexcept
        : info_(std::move(info)) {}
    ~ErrorException() override;

    /// The rendered message.
    const char* what() const noexcept override;

    /// Raises the same error anew.
    [[noreturn]] virtual void rethrow() const;

    /// True when the carried code is `code` or lies below it.
    bool matches(const ErrorCode& code) const noexcept;

    const ErrorInfoPtr& info() const noexcept { return info_; }

    [[noreturn]] static void throw_error(const ErrorInfoPtr& info);

  private:
    ErrorInfoPtr info_;
};

[[noreturn]] void throw_error(const ErrorCode& code, const char* message,
                              const SourceLocation& location);
[[noreturn]] void throw_error(const ErrorCode& code, const char* message,
                              const SourceLocation& location, ErrorInfoPtr nested);
[[noreturn]] void throw_error(const ErrorCode& code, const char* message, ErrorParams params,
                              const SourceLocation& location);
[[noreturn]] void throw_error(const ErrorCode& code, SourceString message,
                              const SourceLocation& location);
[[noreturn]] void throw_error(const ErrorInfoPtr& info);
[[noreturn]] void throw_winerror(const SourceLocation& location, unsigned long number,
                                 bool withText);
[[noreturn]] void throw_errno(const SourceLocation& location, int number);

/// The rule of an optional error slot: a null slot throws the record, any other takes it in place
/// of what it held.
void deliver_error(ErrorInfoPtr* slot, ErrorInfoPtr info);

} // namespace qncore
