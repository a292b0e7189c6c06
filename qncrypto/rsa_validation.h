#pragma once

#include "qncrypto/rsa.h"

// What the RSA operations ask before OpenSSL is called.
namespace qncrypto {

/// Throws when `dataSize` bytes cannot be enciphered with that padding into `bufferSize` bytes.
void validate_rsa_encrypt_params(const RsaContext& context, RsaPadding padding,
                                 std::size_t dataSize, std::size_t bufferSize);

/// The same for deciphering a block of `cipherSize` bytes. With a slot every test is made and the
/// last failure stays in it; that `pss` deciphers nothing is thrown nevertheless.
void validate_rsa_decrypt_params(const RsaContext& context, RsaPadding padding,
                                 std::size_t cipherSize, std::size_t plainBufferSize,
                                 qncore::ErrorInfoPtr* error);

/// The same question of a signature, which has the size of the modulus; false after a failure that
/// went into the slot.
bool validate_rsa_signature_size(const RsaContext& context, std::size_t signatureSize,
                                 qncore::ErrorInfoPtr* error,
                                 const qncore::SourceLocation& location);

/// "error.qncrypto.rsa.padding.unknown" and "error.qncrypto.rsa.signature.hash", thrown or left in
/// the slot.
void throw_unknown_rsa_padding(RsaPadding value, qncore::ErrorInfoPtr* error);
void throw_unknown_hash_algorithm(HashAlgorithm value, qncore::ErrorInfoPtr* error);

} // namespace qncrypto
