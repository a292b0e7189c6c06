#include "qncrypto/rsa.h"

#include <openssl/bn.h>
#include <openssl/rsa.h>

#include "qncore/error_exception.h"
#include "qncrypto/errors.h"
#include "qncrypto/openssl_error.h"
#include "qncrypto/openssl_handles.h"
#include "qncrypto/rsa_encoding.h"

namespace qncrypto {
namespace {

/// What parsing a key of one kind needs.
struct KeyForm {
    DecodeKey decode;
    const char* constructor;
    const char* empty;
    const char* invalid;
};

constexpr KeyForm private_form{d2i_RSAPrivateKey,
                               "qncrypto::RsaPrivateContext::RsaPrivateContext()",
                               "Private Key size is 0", "Invalid private RSA key specified"};
constexpr KeyForm public_form{d2i_RSAPublicKey, "qncrypto::RsaPublicContext::RsaPublicContext()",
                              "Public Key size is 0", "Invalid public RSA key specified"};

RSA* parse_key(RsaKeyKind kind, const unsigned char* key, std::size_t size) {
    const KeyForm& form = kind == RsaKeyKind::private_key ? private_form : public_form;
    const auto location = QN_LOCATION(form.constructor);
    if (key == nullptr || size == 0) {
        qncore::throw_error(error::qncrypto_rsa_key, form.empty, location);
    }
    return decode_key(key, size, form.decode, form.invalid, location).detach();
}

} // namespace

RsaContext::RsaContext(RsaKeyKind kind, const unsigned char* key, std::size_t size)
    : rsa_(parse_key(kind, key, size)) {}

RsaContext::~RsaContext() {
    RSA_free(rsa_);
}

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
    publicKey =
        encode_key(rsa.get(), i2d_RSAPublicKey, code, "Failed to extract public key", location);
    privateKey =
        encode_key(rsa.get(), i2d_RSAPrivateKey, code, "Failed to extract private key", location);
}

} // namespace qncrypto
