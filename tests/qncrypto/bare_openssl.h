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

struct KeyPair {
    Key private_key;
    Key public_key;

    RsaPrivateContext private_context() const { return {private_key.data(), private_key.size()}; }
    RsaPublicContext public_context() const { return {public_key.data(), public_key.size()}; }
    /// The pair in OpenSSL's hands.
    Rsa rsa() const;
};

/// A pair of that many bits, made once.
const KeyPair& key_pair(unsigned int bits = 1024);

/// A public key with a modulus of 40 bytes, below the overhead of OAEP.
Key tiny_public_key();

Bytes bytes_of(const Key& key);
Bytes some_bytes(std::size_t count);

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
