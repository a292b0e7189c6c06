#pragma once

#include <algorithm>
#include <array>

#include <openssl/rsa.h>

#include "qncrypto/openssl_handles.h"

namespace support {

/// Copies one of two real pairs, in turn.
inline int copy_pair(RSA* out, int bits, BIGNUM* exponent, BN_GENCB* /*callback*/) {
    static std::array<RSA*, 2> pairs{};
    static std::size_t turn = 0;
    RSA*& pair = pairs[turn++ % pairs.size()];
    if (pair == nullptr) {
        qncrypto::OpensslHandle made(RSA_new(), RSA_free);
        RSA_set_method(made.get(), RSA_PKCS1_OpenSSL());
        if (RSA_generate_key_ex(made.get(), bits, exponent, nullptr) != 1) {
            return 0; // a test may take the memory
        }
        pair = made.detach();
    }
    std::array<BIGNUM*, 8> parts{
        BN_dup(RSA_get0_n(pair)),    BN_dup(RSA_get0_e(pair)),    BN_dup(RSA_get0_d(pair)),
        BN_dup(RSA_get0_p(pair)),    BN_dup(RSA_get0_q(pair)),    BN_dup(RSA_get0_dmp1(pair)),
        BN_dup(RSA_get0_dmq1(pair)), BN_dup(RSA_get0_iqmp(pair)),
    };
    if (std::count(parts.begin(), parts.end(), nullptr) != 0) {
        std::for_each(parts.begin(), parts.end(), BN_free);
        return 0;
    }
    RSA_set0_key(out, parts[0], parts[1], parts[2]);
    RSA_set0_factors(out, parts[3], parts[4]);
    return RSA_set0_crt_params(out, parts[5], parts[6], parts[7]);
}

/// Makes OpenSSL return two real key pairs in turn from now on, each made when it is first needed,
/// so that a test does not wait for a new pair each time.
inline void make_keys_quickly() {
    static RSA_METHOD* const method = [] {
        RSA_METHOD* const made = RSA_meth_dup(RSA_PKCS1_OpenSSL());
        RSA_meth_set_keygen(made, copy_pair);
        return made;
    }();
    RSA_set_default_method(method);
}

} // namespace support
