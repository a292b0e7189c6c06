#pragma once

#include <vector>

namespace qncertificates {

/// The bytes as one block of PEM text (RFC 7468) with the label "ENCIPHERED PASSWORD"; any bytes,
/// also none. Throws ErrorException when OpenSSL does.
void convert_DER_to_PEM(const std::vector<unsigned char>& in, std::vector<unsigned char>& out);

/// The bytes of such a text. Throws ErrorException with qncertificates_parameter_invalid when it
/// is no PEM text or has another label or headers.
void convert_PEM_to_DER(const std::vector<unsigned char>& in, std::vector<unsigned char>& out);

} // namespace qncertificates
