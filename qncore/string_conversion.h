#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <type_traits>

// Conversions take narrow text as UTF-8; wide text is UTF-16 on Windows and UTF-32 on Linux.
namespace qncore {

/// Decimal text.
std::string to_string(int value);
std::string to_string(unsigned int value);
std::string to_string(long value);
std::string to_string(unsigned long value);
std::string to_string(long long value);
std::string to_string(unsigned long long value);

template <class T>
concept Enumeration = std::is_enum_v<T>;

/// The decimal text of an enumeration's value.
template <Enumeration T>
std::string to_string(T value) {
    return to_string(+static_cast<std::underlying_type_t<T>>(value));
}

/// The UTF-8 form of wide text. Throws error.qncore.encoding for a lone surrogate or a value above
/// U+10FFFF.
std::string to_string(const std::wstring& text);
std::string to_string(const wchar_t* text);
std::string to_string(const wchar_t* text, std::size_t length);

/// The wide form of UTF-8 text. If `length` is npos, the text is null-terminated. Throws
/// error.qncore.encoding for invalid UTF-8 (RFC 3629).
std::wstring to_wstring(const std::string& text);
std::wstring to_wstring(const char* text, std::size_t length = std::string::npos);

/// Compares bytes, ignoring the case of A to Z. Returns a negative, zero or positive number.
int compare_nocase_ascii(const char* left, std::size_t leftLength, const char* right,
                         std::size_t rightLength) noexcept;

/// True if the texts are equal but for the case of ASCII letters.
inline bool equal_nocase_ascii(std::string_view left, std::string_view right) noexcept {
    return compare_nocase_ascii(left.data(), left.size(), right.data(), right.size()) == 0;
}

} // namespace qncore
