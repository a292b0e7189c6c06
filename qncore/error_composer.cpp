#include "qncore/error_composer.h"

namespace qncore {

ErrorInfoPtr ErrorComposer::create(const ErrorCode& code, const SourceLocation& location,
                                   ErrorInfoPtr nested) {
    return ErrorInfo::create(code, message_, std::move(params_), location, std::move(nested));
}

ErrorInfoPtr ErrorComposer::create_with_nested_winerror(const ErrorCode& code,
                                                        const SourceLocation& location,
                                                        unsigned long number, bool withText) {
    return create(code, location, ErrorInfo::from_winerror(location, number, withText));
}

ErrorInfoPtr ErrorComposer::create_with_nested_errno(const ErrorCode& code,
                                                     const SourceLocation& location, int number) {
    return create(code, location, ErrorInfo::from_errno(location, number));
}

void ErrorComposer::create_transfer(ErrorInfoPtr* out, const ErrorCode& code,
                                    const SourceLocation& location, ErrorInfoPtr nested) {
    deliver_error(out, create(code, location, std::move(nested)));
}

void ErrorComposer::create_transfer_with_nested_winerror(ErrorInfoPtr* out, const ErrorCode& code,
                                                         const SourceLocation& location,
                                                         unsigned long number, bool withText) {
    deliver_error(out, create_with_nested_winerror(code, location, number, withText));
}

void ErrorComposer::create_transfer_with_nested_errno(ErrorInfoPtr* out, const ErrorCode& code,
                                                      const SourceLocation& location, int number) {
    deliver_error(out, create_with_nested_errno(code, location, number));
}

void ErrorComposer::throw_error(const ErrorCode& code, const SourceLocation& location,
                                ErrorInfoPtr nested) {
    qncore::throw_error(create(code, location, std::move(nested)));
}

void ErrorComposer::throw_with_nested_winerror(const ErrorCode& code,
                                               const SourceLocation& location, unsigned long number,
                                               bool withText) {
    qncore::throw_error(create_with_nested_winerror(code, location, number, withText));
}

void ErrorComposer::throw_with_nested_errno(const ErrorCode& code, const SourceLocation& location,
                                            int number) {
    qncore::throw_error(create_with_nested_errno(code, location, number));
}

void ErrorComposer::throw_with_nested_system_error(const ErrorCode& code,
                                                   const SourceLocation& location,
                                                   platform::SystemError error) {
    throw_error(code, location, ErrorInfo::from_system_error(location, error));
}

void ErrorComposer::throw_with_nested_exception(const ErrorCode& code,
                                                const SourceLocation& location,
                                                const std::exception& exception) {
    throw_error(code, location, ErrorInfo::from_exception(exception, location));
}

} // namespace qncore
