#include "tests/qncertificates/quick_keys.h"

#include <vector>

#include <openssl/rsa.h>

namespace support {
namespace {

constexpr std::size_t most_pairs = 3;

/// A pair of the pool; the pool grows by real pairs until it is full.
const RSA* next_pair(int bits, BIGNUM* exponent) {
    static std::vector<RSA*> pairs;
    static std::size_t turn = 0;
    if (pairs.size() < most_pairs) {
        RSA* const pair = RSA_new();
        RSA_set_method(pair, RSA_PKCS1_OpenSSL());
        RSA_generate_key_ex(pair, bits, exponent, nullptr);
        pairs.push_back(pair);
    }
    return pairs[turn++ % most_pairs];
}

int copy_pair(RSA* out, int bits, BIGNUM* exponent, BN_GENCB* /*callback*/) {
    const RSA* const pair = next_pair(bits, exponent);
    const auto copy = [&](const BIGNUM* (*part)(const RSA*)) { return BN_dup(part(pair)); };
    return static_cast<int>(
        RSA_set0_key(out, copy(RSA_get0_n), copy(RSA_get0_e), copy(RSA_get0_d)) == 1 &&
        RSA_set0_factors(out, copy(RSA_get0_p), copy(RSA_get0_q)) == 1 &&
        RSA_set0_crt_params(out, copy(RSA_get0_dmp1), copy(RSA_get0_dmq1), copy(RSA_get0_iqmp)) ==
            1);
}

} // namespace

void make_keys_quickly() {
    static RSA_METHOD* const method = [] {
        RSA_METHOD* const made = RSA_meth_dup(RSA_PKCS1_OpenSSL());
        RSA_meth_set_keygen(made, copy_pair);
        return made;
    }();
    RSA_set_default_method(method);
}

} // namespace support
