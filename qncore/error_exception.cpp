#include "qncore/error_exception.h"

#include <new>

#include "qncore/trace_message.h"

namespace qncore {
namespace {

/// Reports a throw to the trace. Tracing reports nothing to its caller, so this never throws.
void trace_throw(const ErrorInfo& info) noexcept {
    qntrace::intTopicHdl* const topic = qntrace::get_system_topic_handle();
    if (!qntrace::is_enabled(topic, qntrace::level_error)) {
        return;
    }
    try {
        const std::string function(info.location().function.view());
        QN_TRACE_ERROR(topic, function.c_str(), "Error Message: {} [{}]", info.chain_text(),
                       info.code().path());
    } catch (const std::bad_alloc&) {
        return;
    }
}

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
    trace_throw(*info);
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
    throw_error(ErrorInfo::create(code, message, std::move(params), location));
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
