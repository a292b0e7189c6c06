#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "qncore/error_info.h"
#include "qncrypto/key.h"

struct rsa_st;

namespace qncrypto {

/// Padding of RFC 8017; `pss` is for signatures only.
enum class RsaPadding : std::uint32_t { none = 0, pkcs1 = 1, oaep = 2, pss = 3 };

/// Digest that a signature is made of. The caller passes the digest itself: 16, 20, 28, 32, 48 or
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
/// A context serves any number of operations, from several threads at a time: it never changes but
/// for what OpenSSL computes with the first operation and keeps, under a lock of its own, for the
/// next ones. So keep a context rather than parse the key again.
///
/// Failures are ErrorExceptions with a code below "error.qncrypto.rsa" and OpenSSL's errors nested;
/// sizes beyond OpenSSL's `int` are "error.qncore.safeCast", and any function may throw
/// std::bad_alloc. A function with an `error` slot that is not null puts the record there and
/// returns; what throws in spite of the slot is said there.
class RsaContext {
  public:
    RsaContext(const RsaContext&) = delete;
    RsaContext& operator=(const RsaContext&) = delete;

    /// Makes a pair of 512 to 32768 bits with the public exponent 65537.
    static void create_key_pair(unsigned int bits, Key& privateKey, Key& publicKey);

    static Key public_key_from_private_key(const Key& privateKey);

    /// The private key as PKCS#8 PEM (RFC 7468), encrypted with a cipher that OpenSSL knows by that
    /// name. The password must not be empty.
    static std::string private_key_as_pkcs8_pem(const Key& privateKey, const Key& password,
                                                const char* cipher);
    /// The inverse. Returns an empty Key after a failure that went into the slot, which takes every
    /// standard exception: std::bad_alloc as "error.qncore.exception".
    static Key private_key_from_pkcs8_pem(const char* pem, std::size_t size, const Key& password,
                                          qncore::ErrorInfoPtr* error);

    /// The bytes, whatever they are, as a PEM block "RSA PUBLIC KEY" without a final line feed.
    static std::string public_key_as_pem(const Key& publicKey);
    /// The inverse, for blocks that are not encrypted. Fails as private_key_from_pkcs8_pem() does.
    static Key public_key_from_pem(const char* pem, std::size_t size, qncore::ErrorInfoPtr* error);

    /// Bytes of each block that a padding takes: 0, 11, 42, 0. An unknown padding is an error, and
    /// 0 with a slot.
    static std::size_t padding_size(RsaPadding padding, qncore::ErrorInfoPtr* error);

    /// Size of the key in bits.
    unsigned int keylength() const;
    /// Size of the key in bytes, which is that of each cipher block and each signature.
    std::size_t modulus_size() const;
    /// Most bytes that one block takes with that padding; 0 if the padding alone fills it.
    std::size_t max_data_size(RsaPadding padding) const;

  protected:
    RsaContext(RsaKeyKind kind, const unsigned char* key, std::size_t size);
    ~RsaContext();

  private:
    friend struct RsaAccess; // the operations

    rsa_st* rsa_; ///< owned
};

/// Encryption and decryption of one block with one half of a pair. Raw forms work on the caller's
/// buffers, the others on a Key.
template <RsaKeyKind kind>
class RsaCipher : public RsaContext {
  public:
    /// Encrypts into at least modulus_size() bytes and returns the bytes written. A private key
    /// takes `pkcs1` and `none`, a public key `oaep`, too. With a null `cipher` or `out` returns
    /// modulus_size() and checks nothing.
    std::int64_t encrypt(const unsigned char* data, std::size_t dataSize, unsigned char* cipher,
                         std::size_t cipherSize, RsaPadding padding) const;
    std::int64_t encrypt(const unsigned char* data, std::size_t dataSize, Key* out,
                         RsaPadding padding) const;

    /// Decrypts one block and returns the bytes written, negative after a failure that went into
    /// the slot. `pss` throws in spite of the slot. With a slot, a wrong size or an unknown padding
    /// is recorded and OpenSSL called all the same: `plain` must have modulus_size() bytes.
    std::int64_t decrypt(const unsigned char* cipher, std::size_t cipherSize, unsigned char* plain,
                         std::size_t plainSize, RsaPadding padding,
                         qncore::ErrorInfoPtr* error) const;
    /// The same into a Key. After a failure that went into the slot it throws std::bad_alloc and
    /// leaves `out` unchanged, because the negative count is taken as a size; with a null `out` it
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

    /// Signs a digest with padding `pkcs1` or `pss` into exactly modulus_size() bytes and returns
    /// the size of the signature; 0 after a failure that went into the slot. With a null
    /// `signature` returns modulus_size().
    ///
    /// Check for 0: with `pkcs1`, a failure of OpenSSL (a digest too long for the key, for
    /// instance) returns 0 without exception or record, and leaves its entry in OpenSSL's queue,
    /// where the next error finds it as a cause. With `pss`, a failed private operation throws in
    /// spite of the slot, and a digest too long for the key yields a signature that never verifies.
    std::int64_t sign(const unsigned char* digest, unsigned char* signature,
                      std::size_t signatureSize, HashAlgorithm hash, RsaPadding padding,
                      qncore::ErrorInfoPtr* error) const;
    /// The same into a Key. With a null `out` the signature is made and dropped.
    std::int64_t sign(const unsigned char* digest, Key* out, HashAlgorithm hash, RsaPadding padding,
                      qncore::ErrorInfoPtr* error) const;
};

class RsaPublicContext final : public RsaCipher<RsaKeyKind::public_key> {
  public:
    RsaPublicContext(const unsigned char* key, std::size_t size)
        : RsaCipher(key, size) {}

    /// True if the signature is that of the digest. One that does not match is no error, nor is
    /// OpenSSL's lack of memory: both return false.
    ///
    /// With a slot, check the slot as well: with `pkcs1`, an answer of OpenSSL below zero fills it
    /// and returns true.
    bool verify(const unsigned char* signature, std::size_t signatureSize,
                const unsigned char* digest, HashAlgorithm hash, RsaPadding padding,
                qncore::ErrorInfoPtr* error) const;
};

} // namespace qncrypto
