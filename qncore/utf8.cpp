#include "qncore/utf8.h"

#include <algorithm>

#include <utf8.h>

#include "qncore/error_composer.h"
#include "qncore/errors.h"

namespace qncore {

std::size_t utf8_sequence_length(char first) noexcept {
    const auto byte = static_cast<unsigned char>(first);
    if (byte < 0x80) {
        return 1;
    }
    if (byte < 0xC0 || byte >= 0xFE) {
        return 0;
    }
    return byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : byte < 0xF8 ? 4 : byte < 0xFC ? 5 : 6;
}

std::size_t utf8_to_ucs4_char(const char* text, std::size_t available,
                              unsigned int* codePoint) noexcept {
    const std::size_t length = available != 0 ? utf8_sequence_length(*text) : 0;
    if (length == 0 || length > available ||
        utf8::find_invalid(text, text + length) != text + length) {
        return 0;
    }
    if (codePoint != nullptr) {
        *codePoint = utf8::unchecked::peek_next(text);
    }
    return length;
}

std::size_t ucs4_char_to_utf8(unsigned int codePoint, char* begin, char* end) noexcept {
    const bool surrogate = codePoint >= 0xD800 && codePoint <= 0xDFFF;
    if (surrogate || codePoint > 0x10FFFF) {
        return 0;
    }
    char bytes[4];
    char* const last = utf8::unchecked::append(codePoint, bytes);
    const auto length = static_cast<std::size_t>(last - bytes);
    if (end - begin < last - bytes) {
        return 0;
    }
    std::copy(bytes, last, begin);
    return length;
}

void check_valid_utf8(const char* text, std::size_t length) {
    const char* const fault = utf8::find_invalid(text, text + length);
    if (fault != text + length) {
        ErrorComposer("Invalid UTF-8 sequence at byte {@position}")
            .param("position", fault - text)
            .throw_error(error::qncore_encoding, QN_LOCATION("qncore::check_valid_utf8()"));
    }
}

} // namespace qncore
