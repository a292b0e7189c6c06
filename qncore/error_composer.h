#pragma once

#include "qncore/error_exception.h"

namespace qncore {

/// Puts one error together: a message template (a literal), its parameters in the order in which
/// the template names them, then one final member.
class ErrorComposer {
  public:
    ErrorComposer() noexcept = default;
    explicit ErrorComposer(const char* message) noexcept
        : message_(message) {}

    template <class Value>
    ErrorComposer& param(const SourceString& name, const Value& value) {
        params_.insert(name, value);
        return *this;
    }

    ErrorInfoPtr create(const ErrorCode& code, const SourceLocation& location,
                        ErrorInfoPtr nested = {});
    ErrorInfoPtr create_with_nested_winerror(const ErrorCode& code, const SourceLocation& location,
                                             unsigned long number, bool withText);
    ErrorInfoPtr create_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                          int number);

    /// These hand the record to the slot `out`, or throw it when `out` is null.
    void create_transfer(ErrorInfoPtr* out, const ErrorCode& code, const SourceLocation& location,
                         ErrorInfoPtr nested = {});
    void create_transfer_with_nested_winerror(ErrorInfoPtr* out, const ErrorCode& code,
                                              const SourceLocation& location, unsigned long number,
                                              bool withText);
    void create_transfer_with_nested_errno(ErrorInfoPtr* out, const ErrorCode& code,
                                           const SourceLocation& location, int number);

    [[noreturn]] void throw_error(const ErrorCode& code, const SourceLocation& location,
                                  ErrorInfoPtr nested = {});
    [[noreturn]] void throw_with_nested_winerror(const ErrorCode& code,
                                                 const SourceLocation& location,
                                                 unsigned long number, bool withText);
    [[noreturn]] void throw_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                              int number);
    /// Nests a Windows error on Windows and an `errno` on Linux.
    [[noreturn]] void throw_with_nested_system_error(const ErrorCode& code,
                                                     const SourceLocation& location,
                                                     platform::SystemError error);
    [[noreturn]] void throw_with_nested_exception(const ErrorCode& code,
                                                  const SourceLocation& location,
                                                  const std::exception& exception);

  private:
    SourceString message_;
    ErrorParams params_;
};

} // namespace qncore
