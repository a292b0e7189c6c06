#include "qncrypto/rsa.h"

#include <algorithm>
#include <array>
#include <type_traits>

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include "qncore/error_composer.h"
#include "qncore/safe_cast.h"
#include "qncrypto/errors.h"
#include "qncrypto/openssl_error.h"
#include "qncrypto/rsa_validation.h"

namespace qncrypto {

using qncore::ErrorCode;
using qncore::ErrorComposer;
using qncore::ErrorInfoPtr;
using qncore::SourceLocation;

/// Access to the key of a context, for the operations only.
struct RsaAccess {
    static RSA* rsa(const RsaContext& context) noexcept { return context.rsa_; }
};

namespace {

struct Padding {
    int number; ///< OpenSSL's own
    std::size_t size;
};

constexpr std::array<Padding, 4> paddings{{
    {RSA_NO_PADDING, 0},
    {RSA_PKCS1_PADDING, 11},
    {RSA_PKCS1_OAEP_PADDING, 42},
    {RSA_PKCS1_PSS_PADDING, 0},
}};

constexpr std::array<const EVP_MD* (*)(), 6> digests{EVP_md5,    EVP_sha1,   EVP_sha224,
                                                     EVP_sha256, EVP_sha384, EVP_sha512};

constexpr const char* decryption_failed =
    "RSA decryption failed (key or padding mismatch or corrupt ciphertext)";
constexpr const char* wrong_signature_padding =
    "Only PKCS#1-v1.5 and PSS padding supported for signing";

/// The longest salt when signing, any salt when verifying.
constexpr int pss_salt_length = RSA_PSS_SALTLEN_AUTO;

/// The entry of a table for an enumeration, or null.
template <class Table, class Enumeration>
const typename Table::value_type* find_entry(const Table& table, Enumeration value) {
    const auto index = static_cast<std::underlying_type_t<Enumeration>>(value);
    return index < table.size() ? &table[index] : nullptr;
}

/// OpenSSL's number; for an unknown padding 0, which OpenSSL refuses.
int openssl_padding(RsaPadding padding) {
    const Padding* const entry = find_entry(paddings, padding);
    return entry != nullptr ? entry->number : 0;
}

const EVP_MD* openssl_digest(HashAlgorithm hash, ErrorInfoPtr* error) {
    const auto* const entry = find_entry(digests, hash);
    if (entry == nullptr) {
        throw_unknown_hash_algorithm(hash, error);
        return nullptr;
    }
    return (*entry)();
}

/// What encryption and decryption with one half of a pair need.
struct Direction {
    decltype(&RSA_private_encrypt) encrypt;
    decltype(&RSA_private_decrypt) decrypt;
    const char* encrypt_name;
    const char* decrypt_name;
    bool refuses_oaep;
};

constexpr Direction direction_of(RsaKeyKind kind) {
    return kind == RsaKeyKind::private_key
               ? Direction{RSA_private_encrypt, RSA_private_decrypt,
                           "qncrypto::RsaPrivateContext::encrypt()",
                           "qncrypto::RsaPrivateContext::decrypt()", true}
               : Direction{RSA_public_encrypt, RSA_public_decrypt,
                           "qncrypto::RsaPublicContext::encrypt()",
                           "qncrypto::RsaPublicContext::decrypt()", false};
}

/// The Key form of decrypting and signing.
template <class Raw>
std::int64_t assign_result(const RsaContext& context, Key* out, Raw raw) {
    Key work(context.modulus_size());
    const std::int64_t written = raw(work.data(), work.size());
    if (out != nullptr) {
        // Required: the count is not tested. A negative one is too large a size for any Key.
        out->assign(work.data(), static_cast<std::size_t>(written));
    }
    return written;
}

/// Returns the size of the signature, or 0 after a failure that is stored in the slot.
std::int64_t sign_pss(RSA* rsa, const unsigned char* digest, const EVP_MD* md,
                      unsigned char* signature, ErrorInfoPtr* error,
                      const SourceLocation& location) {
    Key encoded(static_cast<std::size_t>(RSA_size(rsa)));
    // Required: only a negative result counts as a failure, and its text is that of decryption.
    if (RSA_padding_add_PKCS1_PSS(rsa, encoded.data(), digest, md, pss_salt_length) < 0) {
        deliver_openssl_error(error, error::qncrypto_rsa_signature_padding, decryption_failed,
                              location);
        return 0;
    }
    const int written =
        RSA_private_encrypt(RSA_size(rsa), encoded.data(), signature, rsa, RSA_NO_PADDING);
    if (written < 0) {
        // Required: thrown even if there is a slot.
        throw_openssl_error(error::qncrypto_rsa_encryption, "RSA encryption failed", location);
    }
    return written;
}

std::int64_t sign_pkcs1(RSA* rsa, const unsigned char* digest, const EVP_MD* md,
                        unsigned char* signature, ErrorInfoPtr* error,
                        const SourceLocation& location) {
    unsigned int length = 0;
    // Required: only a negative result is delivered. After OpenSSL's usual 0 the count is 0.
    if (RSA_sign(EVP_MD_type(md), digest, static_cast<unsigned int>(EVP_MD_size(md)), signature,
                 &length, rsa) < 0) {
        deliver_openssl_error(error, error::qncrypto_rsa_signature_sign, "RSA signature failed",
                              location);
    }
    return length;
}

/// True for a match. A mismatch is not an error, so OpenSSL's entry for it is removed.
bool is_match(int result) {
    if (result == 0) {
        ERR_clear_error();
    }
    return result != 0;
}

bool verify_pss(RSA* rsa, const unsigned char* signature, std::size_t signatureSize,
                const unsigned char* digest, const EVP_MD* md, ErrorInfoPtr* error,
                const SourceLocation& location) {
    Key encoded(static_cast<std::size_t>(RSA_size(rsa)));
    if (RSA_public_decrypt(qncore::safe_cast<int>(signatureSize), signature, encoded.data(), rsa,
                           RSA_NO_PADDING) < 0) {
        deliver_openssl_error(error, error::qncrypto_rsa_decryption,
                              "RSA decryption of signature failed", location);
        return false;
    }
    const int result = RSA_verify_PKCS1_PSS(rsa, digest, md, encoded.data(), pss_salt_length);
    if (result < 0) {
        deliver_openssl_error(error, error::qncrypto_rsa_signature_verify,
                              "Verifying signature failed", location);
        return false;
    }
    return is_match(result);
}

bool verify_pkcs1(RSA* rsa, const unsigned char* signature, std::size_t signatureSize,
                  const unsigned char* digest, const EVP_MD* md, ErrorInfoPtr* error,
                  const SourceLocation& location) {
    const int result =
        RSA_verify(EVP_MD_type(md), digest, static_cast<unsigned int>(EVP_MD_size(md)), signature,
                   qncore::safe_cast<unsigned int>(signatureSize), rsa);
    if (result < 0) {
        deliver_openssl_error(error, error::qncrypto_rsa_signature_verify,
                              "Verifying signature failed", location);
    }
    // Required, and unlike PSS: after a failure that is stored in the slot the result is true.
    return is_match(result);
}

} // namespace

std::size_t RsaContext::padding_size(RsaPadding padding, ErrorInfoPtr* error) {
    const Padding* const entry = find_entry(paddings, padding);
    if (entry == nullptr) {
        throw_unknown_rsa_padding(padding, error);
        return 0;
    }
    return entry->size;
}

std::size_t RsaContext::max_data_size(RsaPadding padding) const {
    const std::size_t modulusSize = modulus_size();
    return modulusSize - std::min(modulusSize, padding_size(padding, nullptr));
}

template <RsaKeyKind kind>
std::int64_t RsaCipher<kind>::encrypt(const unsigned char* data, std::size_t dataSize,
                                      unsigned char* cipher, std::size_t cipherSize,
                                      RsaPadding padding) const {
    constexpr Direction direction = direction_of(kind);
    const auto location = QN_LOCATION(direction.encrypt_name);
    if (cipher == nullptr) {
        return static_cast<std::int64_t>(modulus_size());
    }
    // Required: the text mentions PKCS#1, which is allowed.
    if (direction.refuses_oaep && padding == RsaPadding::oaep) {
        qncore::throw_error(
            error::qncrypto_rsa_padding_unsupported,
            "Padding with PKCS#1 and OAEP only supported for encryption with public key", location);
    }
    validate_rsa_encrypt_params(*this, padding, dataSize, cipherSize);
    const int written = direction.encrypt(qncore::safe_cast<int>(dataSize), data, cipher,
                                          RsaAccess::rsa(*this), openssl_padding(padding));
    if (written < 0) {
        throw_openssl_error(error::qncrypto_rsa_encryption, "RSA encryption failed", location);
    }
    return written;
}

template <RsaKeyKind kind>
std::int64_t RsaCipher<kind>::encrypt(const unsigned char* data, std::size_t dataSize, Key* out,
                                      RsaPadding padding) const {
    if (out == nullptr) {
        return static_cast<std::int64_t>(modulus_size());
    }
    Key block(modulus_size());
    const std::int64_t written = encrypt(data, dataSize, block.data(), block.size(), padding);
    block.swap(*out);
    return written;
}

template <RsaKeyKind kind>
std::int64_t RsaCipher<kind>::decrypt(const unsigned char* cipher, std::size_t cipherSize,
                                      unsigned char* plain, std::size_t plainSize,
                                      RsaPadding padding, ErrorInfoPtr* error) const {
    constexpr Direction direction = direction_of(kind);
    // Required: OpenSSL is called even if the validation has filled the slot.
    validate_rsa_decrypt_params(*this, padding, cipherSize, plainSize, error);
    const int written = direction.decrypt(qncore::safe_cast<int>(cipherSize), cipher, plain,
                                          RsaAccess::rsa(*this), openssl_padding(padding));
    if (written < 0) {
        deliver_openssl_error(error, error::qncrypto_rsa_decryption, decryption_failed,
                              QN_LOCATION(direction.decrypt_name));
    }
    return written;
}

template <RsaKeyKind kind>
std::int64_t RsaCipher<kind>::decrypt(const unsigned char* cipher, std::size_t cipherSize, Key* out,
                                      RsaPadding padding, ErrorInfoPtr* error) const {
    return assign_result(*this, out, [&](unsigned char* plain, std::size_t size) {
        return decrypt(cipher, cipherSize, plain, size, padding, error);
    });
}

template class RsaCipher<RsaKeyKind::private_key>;
template class RsaCipher<RsaKeyKind::public_key>;

std::int64_t RsaPrivateContext::sign(const unsigned char* digest, unsigned char* signature,
                                     std::size_t signatureSize, HashAlgorithm hash,
                                     RsaPadding padding, ErrorInfoPtr* error) const {
    const auto location = QN_LOCATION("qncrypto::RsaPrivateContext::sign()");
    if (signature == nullptr) {
        return static_cast<std::int64_t>(modulus_size());
    }
    if (!validate_rsa_signature_size(*this, signatureSize, error, location)) {
        return 0;
    }
    const EVP_MD* const md = openssl_digest(hash, error);
    if (md == nullptr) {
        return 0;
    }
    switch (padding) {
    case RsaPadding::pss:
        return sign_pss(RsaAccess::rsa(*this), digest, md, signature, error, location);
    case RsaPadding::pkcs1:
        return sign_pkcs1(RsaAccess::rsa(*this), digest, md, signature, error, location);
    default:
        deliver_openssl_error(error, error::qncrypto_rsa_signature_padding, wrong_signature_padding,
                              location);
        return 0;
    }
}

std::int64_t RsaPrivateContext::sign(const unsigned char* digest, Key* out, HashAlgorithm hash,
                                     RsaPadding padding, ErrorInfoPtr* error) const {
    return assign_result(*this, out, [&](unsigned char* signature, std::size_t size) {
        return sign(digest, signature, size, hash, padding, error);
    });
}

bool RsaPublicContext::verify(const unsigned char* signature, std::size_t signatureSize,
                              const unsigned char* digest, HashAlgorithm hash, RsaPadding padding,
                              ErrorInfoPtr* error) const {
    const auto location = QN_LOCATION("qncrypto::RsaPublicContext::verify()");
    if (!validate_rsa_signature_size(*this, signatureSize, error, location)) {
        return false;
    }
    const EVP_MD* const md = openssl_digest(hash, error);
    if (md == nullptr) {
        return false;
    }
    switch (padding) {
    case RsaPadding::pss:
        return verify_pss(RsaAccess::rsa(*this), signature, signatureSize, digest, md, error,
                          location);
    case RsaPadding::pkcs1:
        return verify_pkcs1(RsaAccess::rsa(*this), signature, signatureSize, digest, md, error,
                            location);
    default:
        deliver_openssl_error(error, error::qncrypto_rsa_signature_padding, wrong_signature_padding,
                              location);
        return false;
    }
}

} // namespace qncrypto
