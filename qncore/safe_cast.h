#pragma once

#include <cstddef>
#include <typeinfo>

namespace qncore {

namespace impl {

/// Both throw error.qncore.safeCast with the value and the name of the type.
[[noreturn]] void safe_cast_throw_value_truncated(const std::type_info& target, std::size_t value);
[[noreturn]] void safe_cast_throw_sign_reversal(const std::type_info& target, std::size_t value);

} // namespace impl

/// The value in a narrower type; throws when it does not fit.
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
