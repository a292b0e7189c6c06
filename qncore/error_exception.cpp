#include "qncore/error_exception.h"

#include "qncore/trace_message.h"

namespace qncore {
namespace {

/// Renders the chain of causes only as it is inserted, where a failure stays in the trace.
struct Chain {
    const ErrorInfo& info;

    friend std::ostream& operator<<(std::ostream& stream, const Chain& chain) {
        return stream << chain.info.chain_text();
    }
};

} // namespace

ErrorException::~ErrorException() = default;

const char* ErrorException::what() const noexcept {
    return info_->text().c_str();
}

void ErrorException::rethrow() const {
    throw ErrorException(info_);
}

bool ErrorException::matches(const ErrorCode& code) const noexcept {
    return code.covers(info_->code());
}

void ErrorException::throw_error(const ErrorInfoPtr& info) {
    QN_TRACE_ERROR(qntrace::get_system_topic_handle(), info->location().function.view().data(),
                   "Error Message: {} [{}]", Chain{*info}, info->code().path());
    throw ErrorException(info);
}

void throw_error(const ErrorCode& code, const char* message, const SourceLocation& location) {
    throw_error(ErrorInfo::create(code, message, {}, location));
}

void throw_error(const ErrorCode& code, const char* message, const SourceLocation& location,
                 ErrorInfoPtr nested) {
    throw_error(ErrorInfo::create(code, message, {}, location, std::move(nested)));
}

void throw_error(const ErrorCode& code, const char* message, ErrorParams params,
                 const SourceLocation& location) {
    throw_error(ErrorInfo::create(code, message, ErrorParams(params.transfer()), location));
}

void throw_error(const ErrorCode& code, SourceString message, const SourceLocation& location) {
    throw_error(ErrorInfo::create(code, std::move(message), {}, location));
}

void throw_error(const ErrorInfoPtr& info) {
    ErrorException::throw_error(info);
}

void throw_winerror(const SourceLocation& location, unsigned long number, bool withText) {
    throw_error(ErrorInfo::from_winerror(location, number, withText));
}

void throw_errno(const SourceLocation& location, int number) {
    throw_error(ErrorInfo::from_errno(location, number));
}

void deliver_error(ErrorInfoPtr* slot, ErrorInfoPtr info) {
    if (slot == nullptr) {
        throw_error(info);
    }
    *slot = std::move(info);
}

} // namespace qncore
