#pragma once

#include "qncore/error_code.h"

// The codes of this layer. The branches "key", "randomProvider" and "srp" name facilities that are
// not here; they keep the tree of codes whole.
namespace qncrypto::error {

extern const qncore::ErrorCode qncrypto;
extern const qncore::ErrorCode qncrypto_key;
extern const qncore::ErrorCode qncrypto_key_size;
extern const qncore::ErrorCode qncrypto_openssl;
extern const qncore::ErrorCode qncrypto_randomProvider;
extern const qncore::ErrorCode qncrypto_randomProvider_arguments;
extern const qncore::ErrorCode qncrypto_randomProvider_failed;
extern const qncore::ErrorCode qncrypto_rsa;
extern const qncore::ErrorCode qncrypto_rsa_key;
extern const qncore::ErrorCode qncrypto_rsa_keygen;
extern const qncore::ErrorCode qncrypto_rsa_padding;
extern const qncore::ErrorCode qncrypto_rsa_padding_unknown;
extern const qncore::ErrorCode qncrypto_rsa_padding_unsupported;
extern const qncore::ErrorCode qncrypto_rsa_padding_size;
extern const qncore::ErrorCode qncrypto_rsa_encryption;
extern const qncore::ErrorCode qncrypto_rsa_decryption;
extern const qncore::ErrorCode qncrypto_rsa_plainDataSize;
extern const qncore::ErrorCode qncrypto_rsa_cipherDataSize;
extern const qncore::ErrorCode qncrypto_rsa_keystore;
extern const qncore::ErrorCode qncrypto_rsa_keystore_encoding;
extern const qncore::ErrorCode qncrypto_rsa_keystore_decoding;
extern const qncore::ErrorCode qncrypto_rsa_keystore_cipher;
extern const qncore::ErrorCode qncrypto_rsa_keystore_password;
extern const qncore::ErrorCode qncrypto_rsa_keystore_decrypt;
extern const qncore::ErrorCode qncrypto_rsa_signature;
extern const qncore::ErrorCode qncrypto_rsa_signature_hash;
extern const qncore::ErrorCode qncrypto_rsa_signature_padding;
extern const qncore::ErrorCode qncrypto_rsa_signature_sign;
extern const qncore::ErrorCode qncrypto_rsa_signature_verify;
extern const qncore::ErrorCode qncrypto_srp;
extern const qncore::ErrorCode qncrypto_srp_invalidArg;
extern const qncore::ErrorCode qncrypto_srp_invalidArg_size;
extern const qncore::ErrorCode qncrypto_srp_invalidArg_hashAlgorithm;
extern const qncore::ErrorCode qncrypto_srp_invalidArg_blob;
extern const qncore::ErrorCode qncrypto_srp_invalidArg_modulusLength;
extern const qncore::ErrorCode qncrypto_srp_protocolViolation;

} // namespace qncrypto::error
