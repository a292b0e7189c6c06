#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "qncore/error_info.h"
#include "qncrypto/key.h"

struct rsa_st;

namespace qncrypto {

/// Padding of RFC 8017. PSS serves signatures alone.
enum class RsaPadding : std::uint32_t { none = 0, pkcs1 = 1, oaep = 2, pss = 3 };

/// Digest that a signature is made of; the caller hands in the digest itself, in 16, 20, 28, 32,
/// 48 or 64 bytes.
enum class HashAlgorithm : std::uint32_t {
    md5 = 0,
    sha1 = 1,
    sha224 = 2,
    sha256 = 3,
    sha384 = 4,
    sha512 = 5,
};

/// One parsed RSA key, and the forms that keys take outside. Key bytes are DER in the structures
/// RSAPrivateKey and RSAPublicKey of RFC 8017, appendix A.1. All failures are ErrorExceptions with
/// a code below "error.qncrypto.rsa"; what OpenSSL said is nested. Where there is an `error` slot,
/// a slot that is not null receives the record and the function returns instead.
class RsaContext {
  public:
    RsaContext(const RsaContext&) = delete;
    RsaContext& operator=(const RsaContext&) = delete;

    /// Makes a pair of 512 to 32768 bits with the public exponent 65537.
    static void create_key_pair(unsigned int bits, Key& privateKey, Key& publicKey);

    static Key public_key_from_private_key(const Key& privateKey);

    /// The private key as PKCS#8 in PEM text, enciphered with a cipher that OpenSSL knows by that
    /// name and a password that is not empty.
    static std::string private_key_as_pkcs8_pem(const Key& privateKey, const Key& password,
                                                const char* cipher);
    /// The inverse; an empty Key after a failure that went into the slot.
    static Key private_key_from_pkcs8_pem(const char* pem, std::size_t size, const Key& password,
                                          qncore::ErrorInfoPtr* error);

    /// The bytes as an "RSA PUBLIC KEY" block of PEM text without a final line feed. The bytes are
    /// not looked at.
    static std::string public_key_as_pem(const Key& publicKey);
    /// The inverse, for blocks without a password; an empty Key after a failure that went into the
    /// slot.
    static Key public_key_from_pem(const char* pem, std::size_t size, qncore::ErrorInfoPtr* error);

    /// Bytes that a padding takes of each block: 0, 11, 42, 0. For an unknown one the record of
    /// throw_unknown_rsa_padding(), and 0.
    static std::size_t padding_size(RsaPadding padding, qncore::ErrorInfoPtr* error);

    /// Size of the key in bits.
    unsigned int keylength() const;
    /// Size of the key in bytes: of each cipher block and of each signature.
    std::size_t modulus_size() const;
    /// Most bytes that one block takes with that padding; 0 when the padding alone fills it.
    std::size_t max_data_size(RsaPadding padding) const;

  protected:
    /// One of OpenSSL's four raw operations.
    using Transform = int (*)(int, const unsigned char*, unsigned char*, rsa_st*, int);

    explicit RsaContext(rsa_st* rsa) noexcept
        : rsa_(rsa) {}
    ~RsaContext();

    std::int64_t encrypt_raw(Transform transform, const unsigned char* data, std::size_t dataSize,
                             unsigned char* cipher, std::size_t cipherSize, RsaPadding padding,
                             const qncore::SourceLocation& location) const;
    std::int64_t decrypt_raw(Transform transform, const unsigned char* cipher,
                             std::size_t cipherSize, unsigned char* plain, std::size_t plainSize,
                             RsaPadding padding, qncore::ErrorInfoPtr* error,
                             const qncore::SourceLocation& location) const;

    rsa_st* rsa_; ///< owned
};

/// A private key and what it does. Raw forms work on the caller's buffers, the others on a Key.
class RsaPrivateContext : public RsaContext {
  public:
    RsaPrivateContext(const unsigned char* key, std::size_t size);

    /// Enciphers with padding `pkcs1` or `none` into at least modulus_size() bytes; gives the bytes
    /// written. With a null `cipher` gives modulus_size() and checks nothing.
    std::int64_t encrypt(const unsigned char* data, std::size_t dataSize, unsigned char* cipher,
                         std::size_t cipherSize, RsaPadding padding) const;
    std::int64_t encrypt(const unsigned char* data, std::size_t dataSize, Key* out,
                         RsaPadding padding) const;

    /// Deciphers one block; gives the bytes written, negative after a failure that went into the
    /// slot. With a slot a block of a wrong size is recorded and deciphered all the same, so
    /// `plain` must then have modulus_size() bytes.
    std::int64_t decrypt(const unsigned char* cipher, std::size_t cipherSize, unsigned char* plain,
                         std::size_t plainSize, RsaPadding padding,
                         qncore::ErrorInfoPtr* error) const;
    /// The same into a Key. A failure that went into the slot is followed by std::bad_alloc, with
    /// `out` unchanged: the negative count is assigned as a size. With a null `out` it is not.
    std::int64_t decrypt(const unsigned char* cipher, std::size_t cipherSize, Key* out,
                         RsaPadding padding, qncore::ErrorInfoPtr* error) const;

    /// Signs a digest with padding `pkcs1` or `pss` into exactly modulus_size() bytes; gives the
    /// size of the signature, 0 after a failure. With a null `signature` gives modulus_size().
    std::int64_t sign(const unsigned char* digest, unsigned char* signature,
                      std::size_t signatureSize, HashAlgorithm hash, RsaPadding padding,
                      qncore::ErrorInfoPtr* error) const;
    std::int64_t sign(const unsigned char* digest, Key* out, HashAlgorithm hash, RsaPadding padding,
                      qncore::ErrorInfoPtr* error) const;
};

/// A public key and what it does; the forms are those of RsaPrivateContext, and every padding but
/// `pss` enciphers.
class RsaPublicContext : public RsaContext {
  public:
    RsaPublicContext(const unsigned char* key, std::size_t size);

    std::int64_t encrypt(const unsigned char* data, std::size_t dataSize, unsigned char* cipher,
                         std::size_t cipherSize, RsaPadding padding) const;
    std::int64_t encrypt(const unsigned char* data, std::size_t dataSize, Key* out,
                         RsaPadding padding) const;

    std::int64_t decrypt(const unsigned char* cipher, std::size_t cipherSize, unsigned char* plain,
                         std::size_t plainSize, RsaPadding padding,
                         qncore::ErrorInfoPtr* error) const;
    std::int64_t decrypt(const unsigned char* cipher, std::size_t cipherSize, Key* out,
                         RsaPadding padding, qncore::ErrorInfoPtr* error) const;

    /// True when the signature is that of the digest. One that does not match is no error.
    bool verify(const unsigned char* signature, std::size_t signatureSize,
                const unsigned char* digest, HashAlgorithm hash, RsaPadding padding,
                qncore::ErrorInfoPtr* error) const;
};

} // namespace qncrypto
