#pragma once

#include <cstddef>
#include <typeinfo>

#include "qncore/error_info.h"

namespace qncore {

namespace impl {

/// The record of a value that is too large for a type: error.qncore.safeCast.
ErrorInfoPtr safe_cast_value_truncated(const std::type_info& target, std::size_t value);

/// Throw that record, and the record of a value that would become negative.
[[noreturn]] void safe_cast_throw_value_truncated(const std::type_info& target, std::size_t value);
[[noreturn]] void safe_cast_throw_sign_reversal(const std::type_info& target, std::size_t value);

} // namespace impl

/// The value in a narrower type. Throws error.qncore.safeCast if it does not fit.
template <class Target>
Target safe_cast(std::size_t value) {
    const auto image = static_cast<Target>(value);
    if (static_cast<std::size_t>(image) != value) {
        impl::safe_cast_throw_value_truncated(typeid(Target), value);
    }
    if (image < Target{}) {
        impl::safe_cast_throw_sign_reversal(typeid(Target), value);
    }
    return image;
}

} // namespace qncore
