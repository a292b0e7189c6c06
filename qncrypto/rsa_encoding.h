#pragma once

#include <openssl/rsa.h>

#include "qncore/error_info.h"
#include "qncrypto/key.h"
#include "qncrypto/openssl_handles.h"

// Internal to this room.
namespace qncrypto {

/// d2i_RSAPrivateKey or d2i_RSAPublicKey.
using DecodeKey = RSA* (*)(RSA**, const unsigned char**, long);
/// i2d_RSAPrivateKey or i2d_RSAPublicKey.
using EncodeKey = int (*)(const RSA*, unsigned char**);

/// Parses a key. A failure throws "error.qncrypto.rsa.key" with that text and OpenSSL's errors
/// nested.
OpensslHandle<RSA> decode_key(const unsigned char* bytes, std::size_t size, DecodeKey decode,
                              const char* failedText, const qncore::SourceLocation& location);

/// The DER form of the key. A failure has that code and text, with OpenSSL's errors nested; if it
/// is stored in the slot, the Key is empty.
Key encode_key(const RSA* rsa, EncodeKey encode, const qncore::ErrorCode& code,
               const char* failedText, const qncore::SourceLocation& location,
               qncore::ErrorInfoPtr* error = nullptr);

} // namespace qncrypto
