#pragma once

#include <cstdlib>
#include <map>
#include <memory>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/rsa.h>

#include "qncrypto/openssl_handles.h"
#include "qncrypto/rsa.h"

// Keys for tests, and OpenSSL's own calls to compare the room with.
namespace qncrypto::test {

using Bytes = std::vector<unsigned char>;
using Rsa = OpensslHandle<RSA>;

/// The cause of a failure of OpenSSL, for tables of failures.
inline constexpr const char* openssl = "error.qncrypto.openssl";

struct KeyPair {
    explicit KeyPair(unsigned int bits) {
        RsaContext::create_key_pair(bits, private_key, public_key);
    }
    RsaPrivateContext private_context() const { return {private_key.data(), private_key.size()}; }
    RsaPublicContext public_context() const { return {public_key.data(), public_key.size()}; }
    /// The pair as OpenSSL reads it.
    Rsa rsa() const {
        const unsigned char* position = private_key.data();
        return {d2i_RSAPrivateKey(nullptr, &position, static_cast<long>(private_key.size())),
                RSA_free};
    }

    Key private_key;
    Key public_key;
};

/// A pair of that many bits, made once.
inline const KeyPair& key_pair(unsigned int bits = 1024) {
    static std::map<unsigned int, KeyPair> pairs;
    return pairs.try_emplace(bits, bits).first->second;
}

inline Bytes bytes_of(const Key& key) {
    return {key.data(), key.data() + key.size()};
}

inline Bytes some_bytes(std::size_t count) {
    Bytes bytes(count);
    for (std::size_t i = 0; i < count; ++i) {
        bytes[i] = static_cast<unsigned char>(i * 7 + 1);
    }
    return bytes;
}

inline int g_failing = 0; // counts down to the allocation that fails

// OpenSSL refuses it after its first allocation.
inline const int g_replaced = CRYPTO_set_mem_functions(
    [](std::size_t size, const char*, int) {
        return g_failing > 0 && --g_failing == 0 ? nullptr : std::malloc(size);
    },
    nullptr, nullptr);

/// Runs the action with the `number`-th allocation of OpenSSL (from 1 on) failing. Returns false
/// if there are fewer.
template <class Action>
bool with_failing_openssl_allocation(int number, const Action& action) {
    EXPECT_EQ(g_replaced, 1);
    g_failing = number;
    action();
    return std::exchange(g_failing, 0) == 0;
}

using DefaultMethod = std::unique_ptr<const RSA_METHOD, decltype(&RSA_set_default_method)>;

/// While the result lives, each new RSA object answers its private encryption, public decryption,
/// verification and key generation with -1 and an OpenSSL error.
inline DefaultMethod fail_operations() {
    static RSA_METHOD* const failing = [] {
        const auto fail = [](auto...) {
            ERR_raise(ERR_LIB_RSA, ERR_R_INTERNAL_ERROR);
            return -1;
        };
        RSA_METHOD* const method = RSA_meth_dup(RSA_get_default_method());
        RSA_meth_set_priv_enc(method, fail);
        RSA_meth_set_pub_dec(method, fail);
        RSA_meth_set_verify(method, fail);
        RSA_meth_set_keygen(method, fail);
        return method;
    }();
    DefaultMethod before(RSA_get_default_method(), RSA_set_default_method);
    RSA_set_default_method(failing);
    return before;
}

} // namespace qncrypto::test
