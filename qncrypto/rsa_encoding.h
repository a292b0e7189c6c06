#pragma once

#include <openssl/rsa.h>

#include "qncore/error_code.h"
#include "qncore/source_location.h"
#include "qncrypto/key.h"

// Internal to this room.
namespace qncrypto {

/// i2d_RSAPrivateKey or i2d_RSAPublicKey.
using EncodeKey = int (*)(const RSA*, unsigned char**);

/// Puts the DER form of the key into `out`; a failure throws that code and text, with what OpenSSL
/// said nested.
void encode_key(const RSA* rsa, EncodeKey encode, Key& out, const qncore::ErrorCode& code,
                const char* failedText, const qncore::SourceLocation& location);

} // namespace qncrypto
