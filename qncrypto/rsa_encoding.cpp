#include "qncrypto/rsa_encoding.h"

#include "qncrypto/openssl_error.h"

namespace qncrypto {

void encode_key(const RSA* rsa, EncodeKey encode, Key& out, const qncore::ErrorCode& code,
                const char* failedText, const qncore::SourceLocation& location) {
    const int length = encode(rsa, nullptr);
    if (length < 1) {
        throw_openssl_error(code, failedText, location);
    }
    out.resize(static_cast<std::size_t>(length));
    unsigned char* position = out.data();
    encode(rsa, &position);
}

} // namespace qncrypto
