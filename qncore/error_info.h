#pragma once

#include <exception>
#include <string>

#include "platform/system_error.h"
#include "qncore/error_params.h"
#include "qncore/errors.h"
#include "qncore/ref_counted.h"
#include "qncore/source_location.h"

namespace qncore {

class ErrorInfo;
using ErrorInfoPtr = RefCountPtr<const ErrorInfo>;

/// One failure: what, where, with which values, and the failure that caused it. Immutable; threads
/// may share it.
class ErrorInfo final : public RefCounted<AtomicRefCount> {
  public:
    /// A record with the cause `nested`, or without one.
    static ErrorInfoPtr create(const ErrorCode& code, SourceString message, ErrorParams params,
                               const SourceLocation& location, ErrorInfoPtr nested = {});
    /// A record whose cause is from_errno(location, number).
    static ErrorInfoPtr create_with_nested_errno(const ErrorCode& code, SourceString message,
                                                 const SourceLocation& location, int number);

    /// The record of a Windows error, code "error.qncore.windows". `withText` adds the system's
    /// description to the number.
    static ErrorInfoPtr from_winerror(const SourceLocation& location, unsigned long number,
                                      bool withText);
    /// The record of an `errno` value, code "error.qncore.errno".
    static ErrorInfoPtr from_errno(const SourceLocation& location, int number);
    /// One of the two above: a Windows error on Windows, an `errno` on Linux.
    static ErrorInfoPtr from_system_error(const SourceLocation& location,
                                          platform::SystemError error);
    /// The record that an ErrorException carries; for any other exception a record with the code
    /// "error.qncore.exception" and its what().
    static ErrorInfoPtr from_exception(const std::exception& exception,
                                       const SourceLocation& location);

    const ErrorCode& code() const noexcept { return code_; }
    /// The template, with its `{@name}` placeholders.
    const SourceString& message() const noexcept { return message_; }
    const ErrorParams& params() const noexcept { return params_; }
    const SourceLocation& location() const noexcept { return location_; }
    /// The cause; null at the end of the chain.
    const ErrorInfoPtr& nested() const noexcept { return nested_; }

    /// The message with every placeholder replaced by its value. A placeholder without a value
    /// stays unchanged.
    const std::string& text() const noexcept { return text_; }

    /// The texts of the whole chain on one line: "text; cause: text; cause: text".
    std::string chain_text() const;

  private:
    ErrorInfo(const ErrorCode& code, SourceString message, ErrorParams params,
              const SourceLocation& location, ErrorInfoPtr nested);
    ~ErrorInfo() override = default;

    ErrorCode code_;
    SourceString message_;
    ErrorParams params_;
    SourceLocation location_;
    ErrorInfoPtr nested_;
    std::string text_;
};

} // namespace qncore
