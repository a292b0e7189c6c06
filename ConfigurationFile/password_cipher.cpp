#include "ConfigurationFile/configuration_file.h"
#include "qncertificates/certificate_keys.h"
#include "qncertificates/der_pem.h"
#include "qncrypto/key.h"
#include "qncrypto/rsa.h"

namespace vdcertificates {
namespace {

using Bytes = std::vector<unsigned char>;

/// A context over key bytes that are let go as soon as they are read.
template <class Context>
Context make_context(const qncrypto::Key& key) {
    return Context(key.data(), key.size());
}

} // namespace

std::string ConfigurationFile::encipher_password(const std::string& password) {
    const auto context =
        make_context<qncrypto::RsaPrivateContext>(m_certificateKeys->get_private_key());
    qncrypto::Key cipher;
    // Required: through the private key, so that it is the public key that recovers it.
    context.encrypt(reinterpret_cast<const unsigned char*>(password.data()), password.size(),
                    &cipher, qncrypto::RsaPadding::pkcs1);
    const Bytes block(cipher.data(), cipher.data() + cipher.size());
    Bytes pem;
    qncertificates::convert_DER_to_PEM(block, pem);
    std::string text(pem.begin(), pem.end());
    qncrypto::cleanse(pem);
    return text;
}

std::string ConfigurationFile::decipher_password(std::string& cipherText) {
    const Bytes pem(cipherText.begin(), cipherText.end());
    Bytes block;
    qncertificates::convert_PEM_to_DER(pem, block);
    qncrypto::cleanse(cipherText);
    const auto context =
        make_context<qncrypto::RsaPublicContext>(m_certificateKeys->get_public_key());
    qncrypto::Key plain;
    context.decrypt(block.data(), block.size(), &plain, qncrypto::RsaPadding::pkcs1, nullptr);
    qncrypto::cleanse(block);
    return {reinterpret_cast<const char*>(plain.data()), plain.size()};
}

} // namespace vdcertificates
