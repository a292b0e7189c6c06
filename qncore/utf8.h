#pragma once

#include <cstddef>

// UTF-8 by RFC 3629: at most four bytes, no surrogates, no overlong forms.
namespace qncore {

/// Length in bytes of the sequence that begins with this byte: 1 to 4; 5 or 6 for the lead bytes
/// of RFC 2279; 0 for a byte that cannot begin a sequence.
std::size_t utf8_sequence_length(char first) noexcept;

/// Reads one code point. Returns the bytes consumed, or 0 if the text does not begin with a
/// complete valid sequence. `codePoint` may be null.
std::size_t utf8_to_ucs4_char(const char* text, std::size_t available,
                              unsigned int* codePoint) noexcept;

/// Writes one code point. Returns the bytes written, or 0 if the value is a surrogate or above
/// U+10FFFF, or does not fit.
std::size_t ucs4_char_to_utf8(unsigned int codePoint, char* begin, char* end) noexcept;

/// Throws error.qncore.encoding, with the byte position, if the text is invalid UTF-8.
void check_valid_utf8(const char* text, std::size_t length);

} // namespace qncore
