#pragma once

#include <array>
#include <cstddef>
#include <ostream>
#include <string_view>

#include "qncore/string_conversion.h"

namespace qnxml::impl {

/// Writes the name at the index of the value, or "##UNKNOWN(value)##" if there is none; in decimal,
/// whatever the flags of the stream are.
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
