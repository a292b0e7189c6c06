#include "qncore/safe_cast.h"

#include "qncore/error_composer.h"
#include "qncore/errors.h"

namespace qncore::impl {

ErrorInfoPtr safe_cast_value_truncated(const std::type_info& target, std::size_t value) {
    return ErrorComposer("The value {@value} is too large for the type {@type}")
        .param("value", value)
        .param("type", target.name())
        .create(error::qncore_safeCast,
                QN_LOCATION("qncore::impl::safe_cast_throw_value_truncated()"));
}

void safe_cast_throw_value_truncated(const std::type_info& target, std::size_t value) {
    throw_error(safe_cast_value_truncated(target, value));
}

void safe_cast_throw_sign_reversal(const std::type_info& target, std::size_t value) {
    ErrorComposer("The value {@value} turns negative in the type {@type}")
        .param("value", value)
        .param("type", target.name())
        .throw_error(error::qncore_safeCast,
                     QN_LOCATION("qncore::impl::safe_cast_throw_sign_reversal()"));
}

} // namespace qncore::impl
