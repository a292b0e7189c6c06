#include "qncrypto/rsa_validation.h"

#include "qncore/error_composer.h"
#include "qncrypto/errors.h"

namespace qncrypto {

using qncore::ErrorComposer;
using qncore::ErrorInfoPtr;

namespace {

ErrorComposer padding_too_large(std::size_t modulusSize, RsaPadding padding,
                                std::size_t paddingSize) {
    ErrorComposer composer("Specified padding mode too large for modulus of RSA key.  ModulusSize: "
                           "{@modulusSize}, Padding: {@padding} (Size: {@paddingSize})");
    composer.param("modulusSize", modulusSize)
        .param("padding", static_cast<std::uint32_t>(padding))
        .param("paddingSize", paddingSize);
    return composer;
}

} // namespace

void validate_rsa_encrypt_params(const RsaContext& context, RsaPadding padding,
                                 std::size_t dataSize, std::size_t bufferSize) {
    const auto location = QN_LOCATION("qncrypto::validate_rsa_encrypt_params()");
    if (padding == RsaPadding::pss) {
        qncore::throw_error(error::qncrypto_rsa_padding_unsupported,
                            "The PKCS#1 PSS padding is not valid for encryption.", location);
    }
    const std::size_t modulusSize = context.modulus_size();
    const std::size_t paddingSize = RsaContext::padding_size(padding, nullptr);
    if (paddingSize > modulusSize) {
        padding_too_large(modulusSize, padding, paddingSize)
            .throw_error(error::qncrypto_rsa_padding_size, location);
    }
    if (bufferSize < modulusSize) {
        ErrorComposer("Cipher buffer size too small for RSA key.  BufferSize: {@bufferSize}, "
                      "ModulusSize: {@modulusSize}")
            .param("bufferSize", bufferSize)
            .param("modulusSize", modulusSize)
            .throw_error(error::qncrypto_rsa_cipherDataSize, location);
    }
    const std::size_t maxDataSize = modulusSize - paddingSize;
    if (dataSize > maxDataSize) {
        // Required: a placeholder without a parameter, and an unopened parenthesis.
        ErrorComposer("Plaintext data size too big for RSA key and padding.  DataSize: "
                      "{@dataSize}, MaxDataSize: {@maxData})")
            .param("dataSize", dataSize)
            .param("maxDataSize", maxDataSize)
            .throw_error(error::qncrypto_rsa_plainDataSize, location);
    }
}

void validate_rsa_decrypt_params(const RsaContext& context, RsaPadding padding,
                                 std::size_t cipherSize, std::size_t plainBufferSize,
                                 ErrorInfoPtr* error) {
    const auto location = QN_LOCATION("qncrypto::validate_rsa_decrypt_params()");
    if (padding == RsaPadding::pss) {
        // Required: thrown even if there is a slot.
        qncore::throw_error(error::qncrypto_rsa_padding_unsupported,
                            "The PKCS#1 PSS padding is not valid for decryption.", location);
    }
    // Required: each failure is stored in the slot, and the next check is made.
    const std::size_t modulusSize = context.modulus_size();
    const std::size_t paddingSize = RsaContext::padding_size(padding, error);
    if (paddingSize > modulusSize) {
        padding_too_large(modulusSize, padding, paddingSize)
            .create_transfer(error, error::qncrypto_rsa_padding_size, location);
    }
    if (cipherSize != modulusSize) {
        ErrorComposer("Invalid cipher data size for RSA key (must be modulus size).  DataSize: "
                      "{@dataSize}, ModulusSize: {@modulusSize}")
            .param("dataSize", cipherSize)
            .param("modulusSize", modulusSize)
            .create_transfer(error, error::qncrypto_rsa_cipherDataSize, location);
    }
    const std::size_t maxDataSize = modulusSize > paddingSize ? modulusSize - paddingSize : 0;
    if (plainBufferSize < maxDataSize) {
        ErrorComposer("Insufficient plaintext buffer size for RSA key and padding.  BufferSize: "
                      "{@bufferSize}, MaxDataSize: {@maxDataSize}")
            .param("bufferSize", plainBufferSize)
            .param("maxDataSize", maxDataSize)
            .create_transfer(error, error::qncrypto_rsa_plainDataSize, location);
    }
}

bool validate_rsa_signature_size(const RsaContext& context, std::size_t signatureSize,
                                 ErrorInfoPtr* error, const qncore::SourceLocation& location) {
    const std::size_t modulusSize = context.modulus_size();
    if (signatureSize == modulusSize) {
        return true;
    }
    ErrorComposer("Invalid signature data size for RSA key (must be modulus size).  DataSize: "
                  "{@dataSize}, ModulusSize: {@modulusSize}")
        .param("dataSize", signatureSize)
        .param("modulusSize", modulusSize)
        .create_transfer(error, error::qncrypto_rsa_cipherDataSize, location);
    return false;
}

void throw_unknown_rsa_padding(RsaPadding value, ErrorInfoPtr* error) {
    ErrorComposer("Unknown RSA padding enum value: {@paddingValue}")
        .param("paddingValue", static_cast<std::uint32_t>(value))
        .create_transfer(error, error::qncrypto_rsa_padding_unknown,
                         QN_LOCATION("qncrypto::throw_unknown_rsa_padding()"));
}

void throw_unknown_hash_algorithm(HashAlgorithm value, ErrorInfoPtr* error) {
    ErrorComposer("Unknown hash algorithm enum value: {@hashAlgo}")
        .param("hashAlgo", static_cast<std::uint32_t>(value))
        .create_transfer(error, error::qncrypto_rsa_signature_hash,
                         QN_LOCATION("qncrypto::throw_unknown_hash_algorithm()"));
}

} // namespace qncrypto
