#pragma once

#include "qncrypto/rsa.h"

// Checks that the RSA operations make before they call OpenSSL.
namespace qncrypto {

/// Throws if `dataSize` bytes cannot be encrypted with that padding into `bufferSize` bytes.
void validate_rsa_encrypt_params(const RsaContext& context, RsaPadding padding,
                                 std::size_t dataSize, std::size_t bufferSize);

/// The same for decrypting a block of `cipherSize` bytes. With a slot, every check is made and the
/// last failure stays in the slot; `pss` throws.
void validate_rsa_decrypt_params(const RsaContext& context, RsaPadding padding,
                                 std::size_t cipherSize, std::size_t plainBufferSize,
                                 qncore::ErrorInfoPtr* error);

/// Checks that a signature has the size of the modulus. Returns false after a failure that is
/// stored in the slot.
bool validate_rsa_signature_size(const RsaContext& context, std::size_t signatureSize,
                                 qncore::ErrorInfoPtr* error,
                                 const qncore::SourceLocation& location);

/// Deliver "error.qncrypto.rsa.padding.unknown" and "error.qncrypto.rsa.signature.hash" to the
/// slot, see qncore::deliver_error().
void throw_unknown_rsa_padding(RsaPadding value, qncore::ErrorInfoPtr* error);
void throw_unknown_hash_algorithm(HashAlgorithm value, qncore::ErrorInfoPtr* error);

} // namespace qncrypto
