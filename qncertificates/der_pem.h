#pragma once

#include <vector>

namespace qncertificates {

/// Any bytes as one PEM block (RFC 7468) with the label "ENCIPHERED PASSWORD": lines of 64
/// characters of the Base64 alphabet, each with a line feed.
void convert_DER_to_PEM(const std::vector<unsigned char>& in, std::vector<unsigned char>& out);

/// The exact bytes of such a block. Text around the block is passed over, as RFC 7468 has it; a
/// block of another label, one with headers, and all else throw
/// error.qncertificates.parameter.invalid and leave `out` as it was.
void convert_PEM_to_DER(const std::vector<unsigned char>& in, std::vector<unsigned char>& out);

} // namespace qncertificates
