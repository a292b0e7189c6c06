#include "qncore/string_conversion.h"

#include <algorithm>
#include <charconv>
#include <cwchar>
#include <limits>
#include <type_traits>

#include "qncore/error_composer.h"
#include "qncore/errors.h"
#include "qncore/utf8.h"

namespace qncore {
namespace {

template <class Integer>
std::string decimal(Integer value) {
    char digits[std::numeric_limits<Integer>::digits10 + 2];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value).ptr;
    return {std::begin(digits), end};
}

constexpr bool wide_is_utf16 = sizeof(wchar_t) == 2;

constexpr unsigned int code_unit(wchar_t character) {
    return static_cast<std::make_unsigned_t<wchar_t>>(character);
}

constexpr bool is_high_surrogate(unsigned int unit) {
    return unit >= 0xD800 && unit <= 0xDBFF;
}
constexpr bool is_low_surrogate(unsigned int unit) {
    return unit >= 0xDC00 && unit <= 0xDFFF;
}

unsigned char fold_ascii(char character) noexcept {
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 'A' && byte <= 'Z' ? static_cast<unsigned char>(byte + ('a' - 'A')) : byte;
}

} // namespace

std::string to_string(int value) {
    return decimal(value);
}
std::string to_string(unsigned int value) {
    return decimal(value);
}
std::string to_string(long value) {
    return decimal(value);
}
std::string to_string(unsigned long value) {
    return decimal(value);
}
std::string to_string(long long value) {
    return decimal(value);
}
std::string to_string(unsigned long long value) {
    return decimal(value);
}

std::string to_string(const std::wstring& text) {
    return to_string(text.data(), text.size());
}

std::string to_string(const wchar_t* text) {
    return to_string(text, std::wcslen(text));
}

std::string to_string(const wchar_t* text, std::size_t length) {
    std::string narrow;
    narrow.reserve(length);
    for (std::size_t i = 0; i < length; ++i) {
        unsigned int codePoint = code_unit(text[i]);
        if (wide_is_utf16 && is_high_surrogate(codePoint) && i + 1 < length &&
            is_low_surrogate(code_unit(text[i + 1]))) {
            const unsigned int low = code_unit(text[++i]);
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
        }
        char bytes[4];
        const std::size_t count = ucs4_char_to_utf8(codePoint, std::begin(bytes), std::end(bytes));
        if (count == 0) {
            ErrorComposer("The wide text holds no code point at position {@position}")
                .param("position", i)
                .throw_error(error::qncore_encoding, QN_LOCATION("qncore::to_string()"));
        }
        narrow.append(bytes, count);
    }
    return narrow;
}

std::wstring to_wstring(const std::string& text) {
    return to_wstring(text.data(), text.size());
}

std::wstring to_wstring(const char* text, std::size_t length) {
    const std::string_view narrow =
        length == std::string::npos ? std::string_view(text) : std::string_view(text, length);
    check_valid_utf8(narrow.data(), narrow.size());
    std::wstring wide;
    wide.reserve(narrow.size());
    for (std::size_t i = 0; i < narrow.size();) {
        unsigned int codePoint = 0;
        i += utf8_to_ucs4_char(narrow.data() + i, narrow.size() - i, &codePoint);
        if (wide_is_utf16 && codePoint >= 0x10000) {
            wide += static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10));
            wide += static_cast<wchar_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF));
        } else {
            wide += static_cast<wchar_t>(codePoint);
        }
    }
    return wide;
}

int compare_nocase_ascii(const char* left, std::size_t leftLength, const char* right,
                         std::size_t rightLength) noexcept {
    const std::size_t common = std::min(leftLength, rightLength);
    for (std::size_t i = 0; i < common; ++i) {
        const int difference = fold_ascii(left[i]) - fold_ascii(right[i]);
        if (difference != 0) {
            return difference;
        }
    }
    return leftLength == rightLength ? 0 : leftLength < rightLength ? -1 : 1;
}

} // namespace qncore
