#pragma once

#include <array>
#include <cstddef>
#include <ostream>
#include <string_view>

namespace qnxml::impl {

/// Writes the name that stands at the enumeration's value, or "##UNKNOWN(value)##" behind the last.
template <class Enumeration, std::size_t size>
std::ostream& write_enum_name(std::ostream& stream, Enumeration value,
                              const std::array<std::string_view, size>& names) {
    const auto index = static_cast<std::size_t>(value);
    if (index < size) {
        return stream << names[index];
    }
    return stream << "##UNKNOWN(" << index << ")##";
}

} // namespace qnxml::impl
