#include <algorithm>
#include <utility>

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/pkcs12.h>

#include "qncore/base64.h"
#include "qncore/error_composer.h"
#include "qncore/safe_cast.h"
#include "qncrypto/errors.h"
#include "qncrypto/openssl_error.h"
#include "qncrypto/openssl_handles.h"
#include "qncrypto/rsa.h"
#include "qncrypto/rsa_encoding.h"

namespace qncrypto {

using qncore::ErrorInfoPtr;
using qncore::SourceLocation;

namespace {

OpensslHandle<RSA> decode_private_key(const Key& privateKey, const SourceLocation& location) {
    return decode_key(privateKey.data(), privateKey.size(), d2i_RSAPrivateKey,
                      "Invalid private RSA key specified", location);
}

/// An EVP_PKEY that owns the RSA key.
OpensslHandle<EVP_PKEY> wrap_key(OpensslHandle<RSA> rsa, const SourceLocation& location) {
    OpensslHandle pkey(EVP_PKEY_new(), EVP_PKEY_free);
    if (!pkey) {
        throw_openssl_error(error::qncrypto_rsa_key, "Error converting RSA key", location);
    }
    if (EVP_PKEY_assign(pkey.get(), EVP_PKEY_RSA, rsa.get()) < 1) {
        throw_openssl_error(error::qncrypto_rsa_key, "Invalid private RSA key specified", location);
    }
    rsa.detach();
    return pkey;
}

const EVP_CIPHER* cipher_by_name(const char* name, const SourceLocation& location) {
    const EVP_CIPHER* cipher = name != nullptr ? EVP_get_cipherbyname(name) : nullptr;
    if (cipher == nullptr) {
        ErrorInfoPtr nested = openssl_error_info(openssl_error_depth);
        qncore::ErrorComposer("Unknown encryption cipher '{@cipher}'")
            .param("cipher", name != nullptr ? name : "")
            .throw_error(error::qncrypto_rsa_keystore_cipher, location, std::move(nested));
    }
    return cipher;
}

/// OpenSSL's callback for a password: gives none, and sets the flag, if there is one.
int refuse_password(char* /*buffer*/, int /*size*/, int /*writing*/, void* flag) {
    if (flag != nullptr) {
        *static_cast<bool*>(flag) = true;
    }
    return 0;
}

/// False for a size beyond OpenSSL's `int`; delivers the record of safe_cast() then.
bool fits_int(std::size_t size, ErrorInfoPtr* error) {
    if (std::in_range<int>(size)) {
        return true;
    }
    qncore::deliver_error(error, qncore::impl::safe_cast_value_truncated(typeid(int), size));
    return false;
}

/// Runs the body, which delivers its own failures, and delivers other standard exceptions as
/// records.
template <class Body>
Key run_with_slot(ErrorInfoPtr* error, const SourceLocation& location, Body body) {
    try {
        return body();
    } catch (const qncore::ErrorException&) {
        throw; // there is no slot
    } catch (const std::exception& exception) {
        qncore::deliver_error(error, qncore::ErrorInfo::from_exception(exception, location));
        return {};
    }
}

Key read_pkcs8(const char* pem, std::size_t size, const Key& password,
               const SourceLocation& location, ErrorInfoPtr* error) {
    const auto fail = [&](const char* text) {
        deliver_openssl_error(error, error::qncrypto_rsa_keystore_decoding, text, location);
        return Key();
    };
    const char* const undecodable = "Error decoding PKCS#8 private key";
    const OpensslHandle bio(BIO_new_mem_buf(pem, static_cast<int>(size)), BIO_free_all);
    if (!bio) {
        return fail(undecodable);
    }
    const OpensslHandle encrypted(PEM_read_bio_PKCS8(bio.get(), nullptr, nullptr, nullptr),
                                  X509_SIG_free);
    if (!encrypted) {
        return fail(undecodable);
    }
    if (!fits_int(password.size(), error)) {
        return {};
    }
    const OpensslHandle info(PKCS8_decrypt(encrypted.get(),
                                           reinterpret_cast<const char*>(password.data()),
                                           static_cast<int>(password.size())),
                             PKCS8_PRIV_KEY_INFO_free);
    if (!info) {
        deliver_openssl_error(error, error::qncrypto_rsa_keystore_decrypt,
                              "Error decrypting PKCS#8 private key (password wrong?)", location);
        return {};
    }
    const OpensslHandle pkey(EVP_PKCS82PKEY(info.get()), EVP_PKEY_free);
    const OpensslHandle rsa(pkey ? EVP_PKEY_get1_RSA(pkey.get()) : nullptr, RSA_free);
    if (!rsa) {
        return fail(undecodable);
    }
    return encode_key(rsa.get(), i2d_RSAPrivateKey, error::qncrypto_rsa_keystore_decoding,
                      "Failed to extract private key", location, error);
}

Key read_public_key(const char* pem, std::size_t size, const SourceLocation& location,
                    ErrorInfoPtr* error) {
    const auto& code = error::qncrypto_rsa_keystore_decoding;
    const OpensslHandle bio(BIO_new_mem_buf(pem, static_cast<int>(size)), BIO_free_all);
    bool asked = false;
    const OpensslHandle rsa(
        bio ? PEM_read_bio_RSAPublicKey(bio.get(), nullptr, refuse_password, &asked) : nullptr,
        RSA_free);
    if (!rsa) {
        deliver_openssl_error(error, code,
                              asked ? "Encrypted public key container not supported"
                                    : "Error decoding RSA public key",
                              location);
        return {};
    }
    return encode_key(rsa.get(), i2d_RSAPublicKey, code, "Failed to extract public key", location,
                      error);
}

} // namespace

Key RsaContext::public_key_from_private_key(const Key& privateKey) {
    const auto location = QN_LOCATION("qncrypto::RsaContext::public_key_from_private_key()");
    const auto rsa = decode_private_key(privateKey, location);
    return encode_key(rsa.get(), i2d_RSAPublicKey, error::qncrypto_rsa_key,
                      "Failed to extract public key", location);
}

std::string RsaContext::private_key_as_pkcs8_pem(const Key& privateKey, const Key& password,
                                                 const char* cipher) {
    const auto location = QN_LOCATION("qncrypto::RsaContext::private_key_as_pkcs8_pem()");
    if (password.empty()) {
        qncore::throw_error(error::qncrypto_rsa_keystore_password, "No password specified",
                            location);
    }
    const auto pkey = wrap_key(decode_private_key(privateKey, location), location);
    const EVP_CIPHER* const method = cipher_by_name(cipher, location);
    const OpensslHandle bio(BIO_new(BIO_s_mem()), BIO_free_all);
    if (!bio) {
        throw_openssl_error(error::qncrypto_rsa_key, "Error encrypting RSA key", location);
    }
    const char* const failed = "Error encrypting private key";
    if (PEM_write_bio_PKCS8PrivateKey(
            bio.get(), pkey.get(), method, reinterpret_cast<const char*>(password.data()),
            qncore::safe_cast<int>(password.size()), refuse_password, nullptr) < 1) {
        throw_openssl_error(error::qncrypto_rsa_keystore_encoding, failed, location);
    }
    char* text = nullptr;
    const long length = BIO_ctrl(bio.get(), BIO_CTRL_INFO, 0, &text);
    if (length < 1) {
        throw_openssl_error(error::qncrypto_rsa_keystore_encoding, failed, location);
    }
    return {text, static_cast<std::size_t>(length)};
}

Key RsaContext::private_key_from_pkcs8_pem(const char* pem, std::size_t size, const Key& password,
                                           ErrorInfoPtr* error) {
    const auto location = QN_LOCATION("qncrypto::RsaContext::private_key_from_pkcs8_pem()");
    return run_with_slot(error, location, [&] {
        return fits_int(size, error) ? read_pkcs8(pem, size, password, location, error) : Key();
    });
}

std::string RsaContext::public_key_as_pem(const Key& publicKey) {
    constexpr std::size_t bytesPerLine = 48; // 64 characters
    std::string text = "-----BEGIN RSA PUBLIC KEY-----\n";
    for (std::size_t at = 0; at < publicKey.size(); at += bytesPerLine) {
        const std::size_t count = std::min(bytesPerLine, publicKey.size() - at);
        qncore::append_base64(text, publicKey.data() + at, count, true);
        text += '\n';
    }
    text += "-----END RSA PUBLIC KEY-----";
    return text;
}

Key RsaContext::public_key_from_pem(const char* pem, std::size_t size, ErrorInfoPtr* error) {
    const auto location = QN_LOCATION("qncrypto::RsaContext::public_key_from_pem()");
    return run_with_slot(error, location, [&] {
        return fits_int(size, error) ? read_public_key(pem, size, location, error) : Key();
    });
}

} // namespace qncrypto
