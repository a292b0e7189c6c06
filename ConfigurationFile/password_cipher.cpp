#include "ConfigurationFile/password_cipher.h"

#include <algorithm>

#include "ConfigurationFile/configuration_file.h"
#include "qncertificates/certificate_keys.h"
#include "qncertificates/der_pem.h"

namespace vdcertificates {
namespace {

using Bytes = std::vector<unsigned char>;
using qncertificates::CertificateKeys;
using qncrypto::Key;

const unsigned char* bytes_of(const std::string& text) {
    return reinterpret_cast<const unsigned char*>(text.data());
}

/// The stored form of a cipher block.
std::string text_of(const Bytes& block) {
    Bytes pem;
    qncertificates::convert_DER_to_PEM(block, pem);
    std::string text(pem.begin(), pem.end());
    qncrypto::cleanse(pem);
    return text;
}

/// The context of a key, made at its first use.
template <class Context>
const Context& context_of(std::optional<Context>& context, const CertificateKeys& keys,
                          Key (CertificateKeys::*get_key)() const) {
    if (!context) {
        const Key key = (keys.*get_key)();
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
    // Required: encrypted with the private key, so that the public key decrypts it.
    context_of(private_context_, keys_, &CertificateKeys::get_private_key)
        .encrypt(clear.data(), clear.size(), &cipher, qncrypto::RsaPadding::pkcs1);
    return text_of(Bytes(cipher.data(), cipher.data() + cipher.size()));
}

std::string PasswordCipher::decipher(std::string& cipherText) {
    Bytes block;
    qncertificates::convert_PEM_to_DER(Bytes(cipherText.begin(), cipherText.end()), block);
    // Padding of block type 1 has no random part (RFC 8017, section 9.2): enciphering the password
    // again would yield the same block, and the same text if that has our form.
    const bool can_be_kept = memory_ == Memory::texts && text_of(block) == cipherText;
    qncrypto::cleanse(cipherText);
    Key clear;
    context_of(public_context_, keys_, &CertificateKeys::get_public_key)
        .decrypt(block.data(), block.size(), &clear, qncrypto::RsaPadding::pkcs1, nullptr);
    if (can_be_kept) {
        texts_.try_emplace(clear, text_of(block));
    }
    qncrypto::cleanse(block);
    return {reinterpret_cast<const char*>(clear.data()), clear.size()};
}

std::string ConfigurationFile::encipher_password(const std::string& password) {
    return PasswordCipher(*m_certificateKeys, PasswordCipher::Memory::none).encipher(password);
}

std::string ConfigurationFile::decipher_password(std::string& cipherText) {
    return PasswordCipher(*m_certificateKeys, PasswordCipher::Memory::none).decipher(cipherText);
}

} // namespace vdcertificates
