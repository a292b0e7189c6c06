#include "qncore/safe_cast.h"

#include "qncore/error_composer.h"

namespace qncore::impl {
namespace {

[[noreturn]] void throw_cast_error(const char* message, const std::type_info& target,
                                   std::size_t value, const SourceLocation& location) {
    ErrorComposer(message)
        .param("value", value)
        .param("type", target.name())
        .throw_error(error::qncore_safeCast, location);
}

} // namespace

void safe_cast_throw_value_truncated(const std::type_info& target, std::size_t value) {
    throw_cast_error("The value {@value} is too large for the type {@type}", target, value,
                     QN_LOCATION("qncore::impl::safe_cast_throw_value_truncated()"));
}

void safe_cast_throw_sign_reversal(const std::type_info& target, std::size_t value) {
    throw_cast_error("The value {@value} turns negative in the type {@type}", target, value,
                     QN_LOCATION("qncore::impl::safe_cast_throw_sign_reversal()"));
}

} // namespace qncore::impl
