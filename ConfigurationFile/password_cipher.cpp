#include "ConfigurationFile/password_cipher.h"

#include <algorithm>

#include "ConfigurationFile/configuration_file.h"
#include "qncertificates/certificate_keys.h"
#include "qncertificates/der_pem.h"

namespace vdcertificates {
namespace {

using Bytes = std::vector<unsigned char>;
using qncrypto::Key;

const unsigned char* bytes_of(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// The context of a key, made at its first use.
template <class Context>
const Context& context_of(std::optional<Context>& context, const Key& key) {
    if (!context) {
        context.emplace(key.data(), key.size());
    }
    return *context;
}

} // namespace

bool PasswordCipher::Less::operator()(const Key& left, const Key& right) const noexcept {
    return std::lexicographical_compare(left.data(), left.data() + left.size(), right.data(),
                                        right.data() + right.size());
}

std::string PasswordCipher::encipher(const std::string& password) {
    const Key clear(bytes_of(password), password.size());
    if (const auto known = texts_.find(clear); known != texts_.end()) {
        return known->second;
    }
    Key cipher;
    // Required: through the private key, so that it is the public key that recovers it.
    context_of(private_context_, keys_.get_private_key())
        .encrypt(clear.data(), clear.size(), &cipher, qncrypto::RsaPadding::pkcs1);
    Bytes pem;
    qncertificates::convert_DER_to_PEM(Bytes(cipher.data(), cipher.data() + cipher.size()), pem);
    std::string text(pem.begin(), pem.end());
    qncrypto::cleanse(pem);
    return text;
}

std::string PasswordCipher::decipher(std::string& cipherText) {
    const Bytes pem(cipherText.begin(), cipherText.end());
    Bytes block;
    qncertificates::convert_PEM_to_DER(pem, block);
    qncrypto::cleanse(cipherText);
    Key plain;
    context_of(public_context_, keys_.get_public_key())
        .decrypt(block.data(), block.size(), &plain, qncrypto::RsaPadding::pkcs1, nullptr);
    qncrypto::cleanse(block);
    return {reinterpret_cast<const char*>(plain.data()), plain.size()};
}

std::string ConfigurationFile::encipher_password(const std::string& password) {
    return PasswordCipher(*m_certificateKeys, PasswordCipher::Memory::none).encipher(password);
}

std::string ConfigurationFile::decipher_password(std::string& cipherText) {
    return PasswordCipher(*m_certificateKeys, PasswordCipher::Memory::none).decipher(cipherText);
}

} // namespace vdcertificates
