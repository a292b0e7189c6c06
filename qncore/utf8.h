#pragma once

#include <cstddef>

// UTF-8 as of RFC 3629: at most four bytes, no surrogates, no overlong forms.
namespace qncore {

/// How many bytes the sequence has that begins with this byte; 5 and 6 for the lead bytes of the
/// older definition, 0 for a byte that begins none.
std::size_t utf8_sequence_length(char first) noexcept;

/// Reads one code point. Gives the bytes consumed, or 0 when the bytes at hand begin no whole
/// valid sequence. `codePoint` may be null.
std::size_t utf8_to_ucs4_char(const char* text, std::size_t available,
                              unsigned int* codePoint) noexcept;

/// Writes one code point. Gives the bytes written, or 0 when it is no code point or there is no
/// room.
std::size_t ucs4_char_to_utf8(unsigned int codePoint, char* begin, char* end) noexcept;

/// Throws error.qncore.encoding, with the place of the fault in bytes, unless all of the text is
/// UTF-8.
void check_valid_utf8(const char* text, std::size_t length);

} // namespace qncore
