#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <openssl/evp.h>
#include <openssl/rsa.h>

#include "qncrypto/rsa.h"

// Keys for tests, and OpenSSL's own calls to hold the room against.
namespace qncrypto::test {

using Bytes = std::vector<unsigned char>;
using Rsa = std::unique_ptr<RSA, decltype(&RSA_free)>;
using Pkey = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

struct KeyPair {
    Key private_key;
    Key public_key;

    RsaPrivateContext private_context() const { return {private_key.data(), private_key.size()}; }
    RsaPublicContext public_context() const { return {public_key.data(), public_key.size()}; }
    /// The pair in OpenSSL's hands.
    Rsa rsa() const;
    Pkey pkey() const;
};

/// A pair of that many bits, made once.
const KeyPair& key_pair(unsigned int bits = 1024);

/// A public key with a modulus of 40 bytes, below the overhead of OAEP.
Key tiny_public_key();

Bytes bytes_of(const Key& key);
Bytes some_bytes(std::size_t count);
Bytes digest_of(HashAlgorithm hash, const std::string& text);
const EVP_MD* evp_digest(HashAlgorithm hash);

/// One of OpenSSL's own operations with a key, and what it makes of the input.
using EvpContext = std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)>;
EvpContext evp_context(const Pkey& key, int (*init)(EVP_PKEY_CTX*), int padding,
                       const EVP_MD* digest = nullptr);
Bytes by_openssl(const EvpContext& context, decltype(EVP_PKEY_encrypt)* run, const Bytes& input);

/// The cause of a failure of OpenSSL, for tables of failures.
inline constexpr const char* openssl = "error.qncrypto.openssl";

/// Runs the action with the `number`-th allocation of OpenSSL (from 1 on) failing; false when it
/// makes fewer.
bool with_failing_openssl_allocation(int number, const std::function<void()>& action);

/// While it lives, each new RSA object answers its private encryption, public decryption,
/// verification and key generation with -1 and an OpenSSL error.
class FailingOpenssl {
  public:
    FailingOpenssl();
    FailingOpenssl(const FailingOpenssl&) = delete;
    FailingOpenssl& operator=(const FailingOpenssl&) = delete;
    ~FailingOpenssl();

  private:
    const RSA_METHOD* before_;
    RSA_METHOD* failing_;
};

} // namespace qncrypto::test
