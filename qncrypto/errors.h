#pragma once

#include "qncore/error_code.h"

// The codes of this layer. "key", "randomProvider" and "srp" belong to facilities that this library
// does not have; they complete the tree of codes.
namespace qncrypto::error {

using qncore::ErrorCode;

inline constinit const ErrorCode qncrypto{"error.qncrypto"};
inline constinit const ErrorCode qncrypto_key{"error.qncrypto.key"};
inline constinit const ErrorCode qncrypto_key_size{"error.qncrypto.key.size"};
inline constinit const ErrorCode qncrypto_openssl{"error.qncrypto.openssl"};
inline constinit const ErrorCode qncrypto_randomProvider{"error.qncrypto.randomProvider"};
inline constinit const ErrorCode qncrypto_randomProvider_arguments{
    "error.qncrypto.randomProvider.arguments"};
inline constinit const ErrorCode qncrypto_randomProvider_failed{
    "error.qncrypto.randomProvider.failed"};
inline constinit const ErrorCode qncrypto_rsa{"error.qncrypto.rsa"};
inline constinit const ErrorCode qncrypto_rsa_key{"error.qncrypto.rsa.key"};
inline constinit const ErrorCode qncrypto_rsa_keygen{"error.qncrypto.rsa.keygen"};
inline constinit const ErrorCode qncrypto_rsa_padding{"error.qncrypto.rsa.padding"};
inline constinit const ErrorCode qncrypto_rsa_padding_unknown{"error.qncrypto.rsa.padding.unknown"};
inline constinit const ErrorCode qncrypto_rsa_padding_unsupported{
    "error.qncrypto.rsa.padding.unsupported"};
inline constinit const ErrorCode qncrypto_rsa_padding_size{"error.qncrypto.rsa.padding.size"};
inline constinit const ErrorCode qncrypto_rsa_encryption{"error.qncrypto.rsa.encryption"};
inline constinit const ErrorCode qncrypto_rsa_decryption{"error.qncrypto.rsa.decryption"};
inline constinit const ErrorCode qncrypto_rsa_plainDataSize{"error.qncrypto.rsa.plainDataSize"};
inline constinit const ErrorCode qncrypto_rsa_cipherDataSize{"error.qncrypto.rsa.cipherDataSize"};
inline constinit const ErrorCode qncrypto_rsa_keystore{"error.qncrypto.rsa.keystore"};
inline constinit const ErrorCode qncrypto_rsa_keystore_encoding{
    "error.qncrypto.rsa.keystore.encoding"};
inline constinit const ErrorCode qncrypto_rsa_keystore_decoding{
    "error.qncrypto.rsa.keystore.decoding"};
inline constinit const ErrorCode qncrypto_rsa_keystore_cipher{"error.qncrypto.rsa.keystore.cipher"};
inline constinit const ErrorCode qncrypto_rsa_keystore_password{
    "error.qncrypto.rsa.keystore.password"};
inline constinit const ErrorCode qncrypto_rsa_keystore_decrypt{
    "error.qncrypto.rsa.keystore.decrypt"};
inline constinit const ErrorCode qncrypto_rsa_signature{"error.qncrypto.rsa.signature"};
inline constinit const ErrorCode qncrypto_rsa_signature_hash{"error.qncrypto.rsa.signature.hash"};
inline constinit const ErrorCode qncrypto_rsa_signature_padding{
    "error.qncrypto.rsa.signature.padding"};
inline constinit const ErrorCode qncrypto_rsa_signature_sign{"error.qncrypto.rsa.signature.sign"};
inline constinit const ErrorCode qncrypto_rsa_signature_verify{
    "error.qncrypto.rsa.signature.verify"};
inline constinit const ErrorCode qncrypto_srp{"error.qncrypto.srp"};
inline constinit const ErrorCode qncrypto_srp_invalidArg{"error.qncrypto.srp.invalidArg"};
inline constinit const ErrorCode qncrypto_srp_invalidArg_size{"error.qncrypto.srp.invalidArg.size"};
inline constinit const ErrorCode qncrypto_srp_invalidArg_hashAlgorithm{
    "error.qncrypto.srp.invalidArg.hashAlgorithm"};
inline constinit const ErrorCode qncrypto_srp_invalidArg_blob{"error.qncrypto.srp.invalidArg.blob"};
inline constinit const ErrorCode qncrypto_srp_invalidArg_modulusLength{
    "error.qncrypto.srp.invalidArg.modulusLength"};
inline constinit const ErrorCode qncrypto_srp_protocolViolation{
    "error.qncrypto.srp.protocolViolation"};

} // namespace qncrypto::error
