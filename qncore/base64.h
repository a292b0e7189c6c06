#pragma once

#include <cstddef>
#include <string>

namespace qncore {

namespace impl {

struct TransformHelperBase64 {
    /// The standard alphabet (RFC 4648, section 4).
    static const char sm_fromBinaryTable[65];
};

} // namespace impl

/// Appends the Base64 form of the bytes without line ends, with "=" padding if `padding`.
void append_base64(std::string& text, const unsigned char* bytes, std::size_t size, bool padding);

} // namespace qncore
