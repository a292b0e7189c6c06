#pragma once

#include <type_traits>

namespace qnfile {

/// True for enumerations that are sets of flags, which `|` combines.
template <class Enumeration>
inline constexpr bool is_flag_set = false;

template <class Flags>
requires is_flag_set<Flags>
constexpr Flags operator|(Flags left, Flags right) noexcept {
    using Bits = std::underlying_type_t<Flags>;
    return static_cast<Flags>(static_cast<Bits>(left) | static_cast<Bits>(right));
}

} // namespace qnfile
