#include "qncrypto/errors.h"

namespace qncrypto::error {

using qncore::ErrorCode;

constinit const ErrorCode qncrypto{"error.qncrypto"};
constinit const ErrorCode qncrypto_key{"error.qncrypto.key"};
constinit const ErrorCode qncrypto_key_size{"error.qncrypto.key.size"};
constinit const ErrorCode qncrypto_openssl{"error.qncrypto.openssl"};
constinit const ErrorCode qncrypto_randomProvider{"error.qncrypto.randomProvider"};
constinit const ErrorCode qncrypto_randomProvider_arguments{
    "error.qncrypto.randomProvider.arguments"};
constinit const ErrorCode qncrypto_randomProvider_failed{"error.qncrypto.randomProvider.failed"};
constinit const ErrorCode qncrypto_rsa{"error.qncrypto.rsa"};
constinit const ErrorCode qncrypto_rsa_key{"error.qncrypto.rsa.key"};
constinit const ErrorCode qncrypto_rsa_keygen{"error.qncrypto.rsa.keygen"};
constinit const ErrorCode qncrypto_rsa_padding{"error.qncrypto.rsa.padding"};
constinit const ErrorCode qncrypto_rsa_padding_unknown{"error.qncrypto.rsa.padding.unknown"};
constinit const ErrorCode qncrypto_rsa_padding_unsupported{
    "error.qncrypto.rsa.padding.unsupported"};
constinit const ErrorCode qncrypto_rsa_padding_size{"error.qncrypto.rsa.padding.size"};
constinit const ErrorCode qncrypto_rsa_encryption{"error.qncrypto.rsa.encryption"};
constinit const ErrorCode qncrypto_rsa_decryption{"error.qncrypto.rsa.decryption"};
constinit const ErrorCode qncrypto_rsa_plainDataSize{"error.qncrypto.rsa.plainDataSize"};
constinit const ErrorCode qncrypto_rsa_cipherDataSize{"error.qncrypto.rsa.cipherDataSize"};
constinit const ErrorCode qncrypto_rsa_keystore{"error.qncrypto.rsa.keystore"};
constinit const ErrorCode qncrypto_rsa_keystore_encoding{"error.qncrypto.rsa.keystore.encoding"};
constinit const ErrorCode qncrypto_rsa_keystore_decoding{"error.qncrypto.rsa.keystore.decoding"};
constinit const ErrorCode qncrypto_rsa_keystore_cipher{"error.qncrypto.rsa.keystore.cipher"};
constinit const ErrorCode qncrypto_rsa_keystore_password{"error.qncrypto.rsa.keystore.password"};
constinit const ErrorCode qncrypto_rsa_keystore_decrypt{"error.qncrypto.rsa.keystore.decrypt"};
constinit const ErrorCode qncrypto_rsa_signature{"error.qncrypto.rsa.signature"};
constinit const ErrorCode qncrypto_rsa_signature_hash{"error.qncrypto.rsa.signature.hash"};
constinit const ErrorCode qncrypto_rsa_signature_padding{"error.qncrypto.rsa.signature.padding"};
constinit const ErrorCode qncrypto_rsa_signature_sign{"error.qncrypto.rsa.signature.sign"};
constinit const ErrorCode qncrypto_rsa_signature_verify{"error.qncrypto.rsa.signature.verify"};
constinit const ErrorCode qncrypto_srp{"error.qncrypto.srp"};
constinit const ErrorCode qncrypto_srp_invalidArg{"error.qncrypto.srp.invalidArg"};
constinit const ErrorCode qncrypto_srp_invalidArg_size{"error.qncrypto.srp.invalidArg.size"};
constinit const ErrorCode qncrypto_srp_invalidArg_hashAlgorithm{
    "error.qncrypto.srp.invalidArg.hashAlgorithm"};
constinit const ErrorCode qncrypto_srp_invalidArg_blob{"error.qncrypto.srp.invalidArg.blob"};
constinit const ErrorCode qncrypto_srp_invalidArg_modulusLength{
    "error.qncrypto.srp.invalidArg.modulusLength"};
constinit const ErrorCode qncrypto_srp_protocolViolation{"error.qncrypto.srp.protocolViolation"};

} // namespace qncrypto::error
