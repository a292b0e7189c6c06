#pragma once

#include <vector>

namespace qncertificates {

/// Writes bytes as one PEM block (RFC 7468) with the label "ENCIPHERED PASSWORD", in lines of 64
/// Base64 characters, each followed by a line feed.
void convert_DER_to_PEM(const std::vector<unsigned char>& in, std::vector<unsigned char>& out);

/// Reads the bytes of such a block. Ignores text around it, as RFC 7468 allows. Throws
/// error.qncertificates.parameter.invalid and leaves `out` unchanged for a block with another label
/// or with headers, and for text that is not PEM.
void convert_PEM_to_DER(const std::vector<unsigned char>& in, std::vector<unsigned char>& out);

} // namespace qncertificates
