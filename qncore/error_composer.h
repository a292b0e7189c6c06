#pragma once

#include "qncore/error_exception.h"

namespace qncore {

/// Composes one error: a message template (a literal), its parameters, then exactly one call of a
/// create...() or throw...() member, which moves the parameters into the record.
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

    /// Return the record. Its cause is `nested`, ErrorInfo::from_winerror() or
    /// ErrorInfo::from_errno(); `withText` adds the system's description to a Windows error.
    ErrorInfoPtr create(const ErrorCode& code, const SourceLocation& location,
                        ErrorInfoPtr nested = {});
    ErrorInfoPtr create_with_nested_winerror(const ErrorCode& code, const SourceLocation& location,
                                             unsigned long number, bool withText);
    ErrorInfoPtr create_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                          int number);

    /// Deliver the same records to the slot `out`, see deliver_error().
    void create_transfer(ErrorInfoPtr* out, const ErrorCode& code, const SourceLocation& location,
                         ErrorInfoPtr nested = {});
    void create_transfer_with_nested_winerror(ErrorInfoPtr* out, const ErrorCode& code,
                                              const SourceLocation& location, unsigned long number,
                                              bool withText);
    void create_transfer_with_nested_errno(ErrorInfoPtr* out, const ErrorCode& code,
                                           const SourceLocation& location, int number);

    /// Throw the same records.
    [[noreturn]] void throw_error(const ErrorCode& code, const SourceLocation& location,
                                  ErrorInfoPtr nested = {});
    [[noreturn]] void throw_with_nested_winerror(const ErrorCode& code,
                                                 const SourceLocation& location,
                                                 unsigned long number, bool withText);
    [[noreturn]] void throw_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                              int number);
    /// The cause is ErrorInfo::from_system_error().
    [[noreturn]] void throw_with_nested_system_error(const ErrorCode& code,
                                                     const SourceLocation& location,
                                                     platform::SystemError error);
    /// The cause is ErrorInfo::from_exception().
    [[noreturn]] void throw_with_nested_exception(const ErrorCode& code,
                                                  const SourceLocation& location,
                                                  const std::exception& exception);

  private:
    SourceString message_;
    ErrorParams params_;
};

} // namespace qncore
