#pragma once

#include <map>
#include <optional>
#include <string>

#include "qncrypto/key.h"
#include "qncrypto/rsa.h"

namespace qncertificates {
class CertificateKeys;
}

namespace vdcertificates {

/// Deciphers and enciphers the passwords of one read or one change. Parses each key once, at first
/// use. Failures are ErrorExceptions of the RSA layer and of the PEM conversions. The keys must
/// outlive the object.
class PasswordCipher {
  public:
    /// What to remember of each deciphered password: `texts` keeps its stored text, so that
    /// encipher() need not compute it again. The destructor wipes the clear passwords.
    enum class Memory : bool { none, texts };

    PasswordCipher(const qncertificates::CertificateKeys& keys, Memory memory)
        : keys_(keys)
        , memory_(memory) {}

    /// The stored text of a password of 1 to 245 bytes.
    std::string encipher(const std::string& password);

    /// Returns the clear password of a stored text and wipes that text.
    std::string decipher(std::string& cipherText);

  private:
    struct Less {
        bool operator()(const qncrypto::Key& left, const qncrypto::Key& right) const noexcept;
    };

    const qncertificates::CertificateKeys& keys_;
    Memory memory_;
    std::optional<qncrypto::RsaPublicContext> public_context_;
    std::optional<qncrypto::RsaPrivateContext> private_context_;
    std::map<qncrypto::Key, std::string, Less> texts_; ///< stored texts by clear password
};

} // namespace vdcertificates
