#include "qncore/error_info.h"

#include <algorithm>
#include <string_view>

#include "qncore/error_exception.h"
#include "qncore/errors.h"

namespace qncore {
namespace {

/// Replaces each `{@name}` that has a value.
std::string render(std::string_view message, const ErrorParams& params) {
    constexpr std::string_view opening = "{@";
    std::string text;
    while (!message.empty()) {
        const std::size_t start = std::min(message.find(opening), message.size());
        text += message.substr(0, start);
        message.remove_prefix(start);
        const std::size_t end = message.find('}');
        if (end == std::string_view::npos) {
            return text.append(message);
        }
        const std::string_view name = message.substr(opening.size(), end - opening.size());
        const std::string* value = params.find(SourceString::borrow(name));
        text += value != nullptr ? std::string_view(*value) : message.substr(0, end + 1);
        message.remove_prefix(end + 1);
    }
    return text;
}

} // namespace

ErrorInfo::ErrorInfo(const ErrorCode& code, SourceString message, ErrorParams params,
                     const SourceLocation& location, ErrorInfoPtr nested)
    : code_(code)
    , message_(std::move(message))
    , params_(std::move(params))
    , location_(location)
    , nested_(std::move(nested))
    , text_(render(message_.view(), params_)) {}

ErrorInfoPtr ErrorInfo::create(const ErrorCode& code, SourceString message, ErrorParams params,
                               const SourceLocation& location, ErrorInfoPtr nested) {
    return ErrorInfoPtr(
        new ErrorInfo(code, std::move(message), std::move(params), location, std::move(nested)));
}

ErrorInfoPtr ErrorInfo::create_with_nested_errno(const ErrorCode& code, SourceString message,
                                                 const SourceLocation& location, int number) {
    return create(code, std::move(message), {}, location, from_errno(location, number));
}

ErrorInfoPtr ErrorInfo::from_winerror(const SourceLocation& location, unsigned long number,
                                      bool withText) {
    ErrorParams params;
    params.insert("number", number);
    if (!withText) {
        return create(error::qncore_windows, "Windows error {@number}", std::move(params),
                      location);
    }
    params.insert("text", platform::describe(platform::SystemError::windows(number)));
    return create(error::qncore_windows, "{@text} (Windows error {@number})", std::move(params),
                  location);
}

ErrorInfoPtr ErrorInfo::from_errno(const SourceLocation& location, int number) {
    ErrorParams params;
    params.insert("number", number);
    params.insert("text", platform::describe(platform::SystemError::posix(number)));
    return create(error::qncore_errno, "{@text} (errno {@number})", std::move(params), location);
}

ErrorInfoPtr ErrorInfo::from_system_error(const SourceLocation& location,
                                          platform::SystemError error) {
    return error.domain() == platform::SystemError::Domain::windows
               ? from_winerror(location, error.number(), true)
               : from_errno(location, static_cast<int>(error.number()));
}

ErrorInfoPtr ErrorInfo::from_exception(const std::exception& exception,
                                       const SourceLocation& location) {
    if (const auto* carrier = dynamic_cast<const ErrorException*>(&exception)) {
        return carrier->info();
    }
    ErrorParams params;
    params.insert("what", exception.what());
    return create(error::qncore_exception, "{@what}", std::move(params), location);
}

std::string ErrorInfo::chain_text() const {
    std::string chain = text_;
    for (const ErrorInfo* cause = nested_.get(); cause != nullptr; cause = cause->nested_.get()) {
        chain += "; cause: ";
        chain += cause->text_;
    }
    return chain;
}

} // namespace qncore
