#pragma once

#include <cstdint>
#include <string>

#include "qncore/ref_counted.h"
#include "qncrypto/key.h"

namespace qncertificates {

/// What stands in a pair of key files.
enum EFormat : std::uint32_t {
    eFormatPkcs1Der = 2, ///< RSAPublicKey and RSAPrivateKey of RFC 8017, DER, nothing around them
};

/// A machine's RSA key pair and the two files that keep it. All failures are ErrorExceptions; this
/// layer's own have the code error.qncertificates.parameter.invalid, an unknown format among them.
class CertificateKeys final : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    /// Loads the pair when both files are there, and throws when they cannot be read or do not hold
    /// a pair. With a file missing, or when the pair is to be regenerated, the object has no keys
    /// until set_keys(); in the latter case the files are not looked at.
    CertificateKeys(const std::string& publicKeyFile, const std::string& privateKeyFile,
                    EFormat format, bool regenerate);
    ~CertificateKeys() override = default;

    /// Makes a new pair of 2048 bits and writes it into both files in place. Whoever may not read
    /// and write both files gets an error, and neither is changed. The object takes the new keys
    /// when both are stored; an error in between leaves a pair that does not load.
    void set_keys(EFormat format);

    /// PKCS#1 DER; empty while there are no keys.
    qncrypto::Key get_private_key() const { return private_key_; }
    qncrypto::Key get_public_key() const { return public_key_; }

  private:
    void load();

    std::string public_key_file_;
    std::string private_key_file_;
    qncrypto::Key public_key_;
    qncrypto::Key private_key_;
};

} // namespace qncertificates
