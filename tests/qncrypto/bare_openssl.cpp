#include "tests/qncrypto/bare_openssl.h"

#include <cstdlib>
#include <map>
#include <utility>

#include <gtest/gtest.h>
#include <openssl/crypto.h>
#include <openssl/err.h>

namespace qncrypto::test {

Rsa KeyPair::rsa() const {
    const unsigned char* position = private_key.data();
    return {d2i_RSAPrivateKey(nullptr, &position, static_cast<long>(private_key.size())), RSA_free};
}

const KeyPair& key_pair(unsigned int bits) {
    static std::map<unsigned int, KeyPair> pairs;
    const auto [place, made] = pairs.try_emplace(bits);
    if (made) {
        RsaContext::create_key_pair(bits, place->second.private_key, place->second.public_key);
    }
    return place->second;
}

Key tiny_public_key() {
    const Bytes modulus(40, 0xFF);
    const Rsa rsa(RSA_new(), RSA_free);
    BIGNUM* exponent = BN_new();
    BN_set_word(exponent, 3);
    RSA_set0_key(rsa.get(), BN_bin2bn(modulus.data(), 40, nullptr), exponent, nullptr);
    Bytes der(static_cast<std::size_t>(i2d_RSAPublicKey(rsa.get(), nullptr)));
    unsigned char* position = der.data();
    i2d_RSAPublicKey(rsa.get(), &position);
    return {der.data(), der.size()};
}

Bytes bytes_of(const Key& key) {
    return {key.data(), key.data() + key.size()};
}

Bytes some_bytes(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<unsigned char>(i * 7 + 1);
    }
    return bytes;
}

namespace {

int g_failing = 0; // counts down to the allocation that fails

bool fails_now() {
    return g_failing > 0 && --g_failing == 0;
}

// Before OpenSSL's first allocation, or it refuses.
const int g_replaced = CRYPTO_set_mem_functions(
    [](std::size_t size, const char*, int) { return fails_now() ? nullptr : std::malloc(size); },
    [](void* block, std::size_t size, const char*, int) {
        return fails_now() ? nullptr : std::realloc(block, size);
    },
    [](void* block, const char*, int) { std::free(block); });

int fail() {
    ERR_raise(ERR_LIB_RSA, ERR_R_INTERNAL_ERROR);
    return -1;
}

int fail_transform(int, const unsigned char*, unsigned char*, RSA*, int) {
    return fail();
}

} // namespace

bool with_failing_openssl_allocation(int number, const std::function<void()>& action) {
    EXPECT_EQ(g_replaced, 1);
    g_failing = number;
    action();
    return std::exchange(g_failing, 0) == 0;
}

FailingOpenssl::FailingOpenssl()
    : before_(RSA_get_default_method())
    , failing_(RSA_meth_dup(before_)) {
    RSA_meth_set_priv_enc(failing_, fail_transform);
    RSA_meth_set_pub_dec(failing_, fail_transform);
    RSA_meth_set_verify(failing_, [](int, const unsigned char*, unsigned int, const unsigned char*,
                                     unsigned int, const RSA*) { return fail(); });
    RSA_meth_set_keygen(failing_, [](RSA*, int, BIGNUM*, BN_GENCB*) { return fail(); });
    RSA_set_default_method(failing_);
}

FailingOpenssl::~FailingOpenssl() {
    RSA_set_default_method(before_);
    RSA_meth_free(failing_);
}

} // namespace qncrypto::test
