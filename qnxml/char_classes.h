#pragma once

#include <cstdint>

namespace qnxml {

/// Bits of char_class(): the productions of XML 1.0, appendix B (first to fourth edition), white
/// space, and four characters of their own.
enum CharClass : std::uint32_t {
    char_class_letter = 0x0001, ///< BaseChar
    char_class_digit = 0x0002,
    char_class_combining = 0x0004,
    char_class_extender = 0x0008,
    char_class_ideographic = 0x0010,
    char_class_white_space = 0x0020,
    char_class_hyphen = 0x1000,
    char_class_dot = 0x2000,
    char_class_colon = 0x4000,
    char_class_underscore = 0x8000,
};

/// What may begin a name. Required: a dot may, a colon may not.
constexpr std::uint32_t name_start_classes =
    char_class_letter | char_class_ideographic | char_class_dot | char_class_underscore;

/// What may follow in a name.
constexpr std::uint32_t name_classes = name_start_classes | char_class_digit |
                                       char_class_combining | char_class_extender |
                                       char_class_hyphen | char_class_colon;

static_assert(name_start_classes == 0xA011 && name_classes == 0xF01F);

/// The classes of a code point, 0 for one that has none.
std::uint32_t char_class(std::uint32_t codePoint) noexcept;

} // namespace qnxml
