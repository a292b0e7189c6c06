#include "qncrypto/rsa.h"

#include <openssl/bn.h>
#include <openssl/rsa.h>

#include "qncore/error_composer.h"
#include "qncore/safe_cast.h"
#include "qncrypto/errors.h"
#include "qncrypto/openssl_error.h"
#include "qncrypto/openssl_handles.h"
#include "qncrypto/rsa_encoding.h"

namespace qncrypto {
namespace {

/// d2i_RSAPrivateKey or d2i_RSAPublicKey.
using ParseKey = RSA* (*)(RSA**, const unsigned char**, long);

/// The key out of its DER form, for a constructor that has texts of its own.
rsa_st* parse_key(const unsigned char* key, std::size_t size, ParseKey parse, const char* emptyText,
                  const char* invalidText, const qncore::SourceLocation& location) {
    if (key == nullptr || size == 0) {
        qncore::throw_error(error::qncrypto_rsa_key, emptyText, location);
    }
    const unsigned char* position = key;
    rsa_st* const rsa = parse(nullptr, &position, qncore::safe_cast<long>(size));
    if (rsa == nullptr) {
        throw_openssl_error(error::qncrypto_rsa_key, invalidText, location);
    }
    return rsa;
}

} // namespace

RsaContext::~RsaContext() {
    RSA_free(rsa_);
}

RsaPrivateContext::RsaPrivateContext(const unsigned char* key, std::size_t size)
    : RsaContext(parse_key(key, size, d2i_RSAPrivateKey, "Private Key size is 0",
                           "Invalid private RSA key specified",
                           QN_LOCATION("qncrypto::RsaPrivateContext::RsaPrivateContext()"))) {}

RsaPublicContext::RsaPublicContext(const unsigned char* key, std::size_t size)
    : RsaContext(parse_key(key, size, d2i_RSAPublicKey, "Public Key size is 0",
                           "Invalid public RSA key specified",
                           QN_LOCATION("qncrypto::RsaPublicContext::RsaPublicContext()"))) {}

unsigned int RsaContext::keylength() const {
    const int bits = BN_num_bits(RSA_get0_n(rsa_));
    if (bits < 0) {
        qncore::throw_error(error::qncrypto_rsa_key,
                            "Unable to determine number of bits of RSA key",
                            QN_LOCATION("qncrypto::RsaContext::keylength()"));
    }
    return static_cast<unsigned int>(bits);
}

std::size_t RsaContext::modulus_size() const {
    return static_cast<std::size_t>(RSA_size(rsa_));
}

void RsaContext::create_key_pair(unsigned int bits, Key& privateKey, Key& publicKey) {
    constexpr unsigned int leastBits = 512;
    constexpr unsigned int mostBits = 32768;
    const auto location = QN_LOCATION("qncrypto::RsaContext::create_key_pair()");
    const auto& code = error::qncrypto_rsa_keygen;
    if (bits < leastBits) {
        qncore::throw_error(code, "Specified RSA key length is insufficient", location);
    }
    if (bits > mostBits) {
        // Required: "larget".
        qncore::throw_error(code, "Excessively larget RSA key length specified", location);
    }
    const OpensslHandle exponent(BN_new(), BN_free);
    if (!exponent || BN_set_word(exponent.get(), RSA_F4) != 1) {
        throw_openssl_error(code, "Failed setup key generation", location);
    }
    const OpensslHandle rsa(RSA_new(), RSA_free);
    if (!rsa) {
        throw_openssl_error(code, "Failed setup key generation", location);
    }
    if (RSA_generate_key_ex(rsa.get(), static_cast<int>(bits), exponent.get(), nullptr) != 1) {
        throw_openssl_error(code, "Failed to generate RSA key pair", location);
    }
    encode_key(rsa.get(), i2d_RSAPublicKey, publicKey, code, "Failed to extract public key",
               location);
    encode_key(rsa.get(), i2d_RSAPrivateKey, privateKey, code, "Failed to extract private key",
               location);
}

} // namespace qncrypto
