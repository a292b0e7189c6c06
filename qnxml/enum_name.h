#pragma once

#include <array>
#include <cstddef>
#include <ostream>
#include <string_view>

#include "qncore/string_conversion.h"

namespace qnxml::impl {

/// Writes the name of a value, or "##UNKNOWN(value)##" with the value in decimal, regardless of the
/// stream's flags.
template <class Enumeration, std::size_t size>
std::ostream& write_enum_name(std::ostream& stream, Enumeration value,
                              const std::array<std::string_view, size>& names) {
    const auto index = static_cast<std::size_t>(value);
    if (index < size) {
        return stream << names[index];
    }
    return stream << "##UNKNOWN(" << qncore::to_string(index) << ")##";
}

} // namespace qnxml::impl
