#include "qncrypto/rsa_encoding.h"

#include "qncore/safe_cast.h"
#include "qncrypto/errors.h"
#include "qncrypto/openssl_error.h"

namespace qncrypto {

OpensslHandle<RSA> decode_key(const unsigned char* bytes, std::size_t size, DecodeKey decode,
                              const char* failedText, const qncore::SourceLocation& location) {
    const unsigned char* position = bytes;
    OpensslHandle rsa(decode(nullptr, &position, qncore::safe_cast<long>(size)), RSA_free);
    if (!rsa) {
        throw_openssl_error(error::qncrypto_rsa_key, failedText, location);
    }
    return rsa;
}

Key encode_key(const RSA* rsa, EncodeKey encode, const qncore::ErrorCode& code,
               const char* failedText, const qncore::SourceLocation& location,
               qncore::ErrorInfoPtr* error) {
    const int length = encode(rsa, nullptr);
    Key encoded(length > 0 ? static_cast<std::size_t>(length) : 0);
    unsigned char* position = encoded.data();
    if (length < 1 || encode(rsa, &position) != length) {
        deliver_openssl_error(error, code, failedText, location);
        return {};
    }
    return encoded;
}

} // namespace qncrypto
