#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "qncore/error_info.h"
#include "qncrypto/key.h"

struct rsa_st;

namespace qncrypto {

/// Padding by RFC 8017. `pss` is for signatures only.
enum class RsaPadding : std::uint32_t { none = 0, pkcs1 = 1, oaep = 2, pss = 3 };

/// Digest algorithm of a signature. The caller passes the digest, which has 16, 20, 28, 32, 48 or
/// 64 bytes.
enum class HashAlgorithm : std::uint32_t {
    md5 = 0,
    sha1 = 1,
    sha224 = 2,
    sha256 = 3,
    sha384 = 4,
    sha512 = 5,
};

/// Which half of a pair a context holds.
enum class RsaKeyKind : std::uint8_t { private_key, public_key };

/// One parsed RSA key, and conversions between the forms of keys. Key bytes are DER in the
/// structures RSAPrivateKey and RSAPublicKey of RFC 8017, appendix A.1.
///
/// A context is thread-safe and serves any number of operations. OpenSSL caches values for the key
/// at its first use, so keep a context rather than parse the key again.
///
/// Failures are ErrorExceptions with a code below "error.qncrypto.rsa" and OpenSSL's errors nested;
/// sizes beyond OpenSSL's `int` are "error.qncore.safeCast", and any function may throw
/// std::bad_alloc. A function whose `error` slot is not null stores the record there and returns;
/// the exceptions to this rule are documented at the function.
class RsaContext {
  public:
    RsaContext(const RsaContext&) = delete;
    RsaContext& operator=(const RsaContext&) = delete;

    /// Makes a pair of 512 to 32768 bits with the public exponent 65537.
    static void create_key_pair(unsigned int bits, Key& privateKey, Key& publicKey);

    static Key public_key_from_private_key(const Key& privateKey);

    /// The private key as PKCS#8 PEM (RFC 7468), encrypted with the cipher of that OpenSSL name.
    /// The password must not be empty.
    static std::string private_key_as_pkcs8_pem(const Key& privateKey, const Key& password,
                                                const char* cipher);
    /// The inverse. Returns an empty Key after a failure that is stored in the slot. The slot takes
    /// every standard exception: std::bad_alloc as "error.qncore.exception".
    static Key private_key_from_pkcs8_pem(const char* pem, std::size_t size, const Key& password,
                                          qncore::ErrorInfoPtr* error);

    /// The bytes, unchecked, as a PEM block "RSA PUBLIC KEY" without a final line feed.
    static std::string public_key_as_pem(const Key& publicKey);
    /// The inverse, for unencrypted blocks. Fails as private_key_from_pkcs8_pem() does.
    static Key public_key_from_pem(const char* pem, std::size_t size, qncore::ErrorInfoPtr* error);

    /// The bytes of a block that the padding needs: 0, 11, 42 or 0. For an unknown padding throws,
    /// or fills the slot and returns 0.
    static std::size_t padding_size(RsaPadding padding, qncore::ErrorInfoPtr* error);

    /// Size of the key in bits.
    unsigned int keylength() const;
    /// Size of the key in bytes: the size of a cipher block and of a signature.
    std::size_t modulus_size() const;
    /// The most bytes that fit into one block with that padding.
    std::size_t max_data_size(RsaPadding padding) const;

  protected:
    RsaContext(RsaKeyKind kind, const unsigned char* key, std::size_t size);
    ~RsaContext();

  private:
    friend struct RsaAccess; // the operations

    rsa_st* rsa_; ///< owned
};

/// Encryption and decryption of one block with one half of a pair, between the caller's buffers or
/// into a Key.
template <RsaKeyKind kind>
class RsaCipher : public RsaContext {
  public:
    /// Encrypts into a buffer of at least modulus_size() bytes and returns the bytes written. A
    /// private key takes the paddings `pkcs1` and `none`, a public key also `oaep`. With a null
    /// `cipher` or `out` returns modulus_size() and checks nothing.
    std::int64_t encrypt(const unsigned char* data, std::size_t dataSize, unsigned char* cipher,
                         std::size_t cipherSize, RsaPadding padding) const;
    std::int64_t encrypt(const unsigned char* data, std::size_t dataSize, Key* out,
                         RsaPadding padding) const;

    /// Decrypts one block and returns the bytes written, or a negative number after a failure that
    /// is stored in the slot. `pss` throws also with a slot. With a slot, OpenSSL is called even if
    /// a size or the padding is wrong, so `plain` must have modulus_size() bytes.
    std::int64_t decrypt(const unsigned char* cipher, std::size_t cipherSize, unsigned char* plain,
                         std::size_t plainSize, RsaPadding padding,
                         qncore::ErrorInfoPtr* error) const;
    /// Decrypts into a Key. After a failure that is stored in the slot, throws std::bad_alloc and
    /// leaves `out` unchanged, because the negative count is used as a size; with a null `out`
    /// returns the negative count.
    std::int64_t decrypt(const unsigned char* cipher, std::size_t cipherSize, Key* out,
                         RsaPadding padding, qncore::ErrorInfoPtr* error) const;

  protected:
    RsaCipher(const unsigned char* key, std::size_t size)
        : RsaContext(kind, key, size) {}
    ~RsaCipher() = default;
};

extern template class RsaCipher<RsaKeyKind::private_key>;
extern template class RsaCipher<RsaKeyKind::public_key>;

class RsaPrivateContext final : public RsaCipher<RsaKeyKind::private_key> {
  public:
    RsaPrivateContext(const unsigned char* key, std::size_t size)
        : RsaCipher(key, size) {}

    /// Signs a digest with padding `pkcs1` or `pss` into a buffer of exactly modulus_size() bytes.
    /// Returns the size of the signature, or 0 after a failure that is stored in the slot. With a
    /// null `signature` returns modulus_size().
    ///
    /// Check for 0: with `pkcs1`, a failure of OpenSSL (for instance a digest too long for the key)
    /// returns 0 without exception or record and leaves its entry in OpenSSL's queue, where it
    /// becomes a cause of the next error. With `pss`, a failed private operation throws also with a
    /// slot, and a failed encoding (for instance of a digest too long for the key) yields a
    /// signature that never verifies.
    std::int64_t sign(const unsigned char* digest, unsigned char* signature,
                      std::size_t signatureSize, HashAlgorithm hash, RsaPadding padding,
                      qncore::ErrorInfoPtr* error) const;
    /// Signs into a Key. With a null `out` the signature is computed and discarded.
    std::int64_t sign(const unsigned char* digest, Key* out, HashAlgorithm hash, RsaPadding padding,
                      qncore::ErrorInfoPtr* error) const;
};

class RsaPublicContext final : public RsaCipher<RsaKeyKind::public_key> {
  public:
    RsaPublicContext(const unsigned char* key, std::size_t size)
        : RsaCipher(key, size) {}

    /// True if the signature matches the digest. A mismatch is not an error, nor is a lack of
    /// memory in OpenSSL: both return false.
    ///
    /// With a slot, check the slot, too: with `pkcs1`, a negative result of OpenSSL fills it and
    /// returns true.
    bool verify(const unsigned char* signature, std::size_t signatureSize,
                const unsigned char* digest, HashAlgorithm hash, RsaPadding padding,
                qncore::ErrorInfoPtr* error) const;
};

} // namespace qncrypto
