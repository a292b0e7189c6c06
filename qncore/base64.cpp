#include "qncore/base64.h"

namespace qncore {

const char impl::TransformHelperBase64::sm_fromBinaryTable[65] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

void append_base64(std::string& text, const unsigned char* bytes, std::size_t size, bool padding) {
    const char* const table = impl::TransformHelperBase64::sm_fromBinaryTable;
    unsigned int bits = 0;
    unsigned int accumulator = 0;
    for (std::size_t i = 0; i < size; ++i) {
        bits += 8;
        accumulator = (accumulator << 8) | bytes[i];
        while (bits >= 6) {
            bits -= 6;
            text += table[(accumulator >> bits) & 63];
        }
    }
    if (bits != 0) {
        text += table[(accumulator << (6 - bits)) & 63];
    }
    if (padding && bits != 0) {
        text += bits == 2 ? "==" : "=";
    }
}

} // namespace qncore
