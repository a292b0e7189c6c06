#pragma once

#include <cstdint>
#include <string>

#include "qncore/ref_counted.h"
#include "qncrypto/key.h"

namespace qncertificates {

/// Format of a pair of key files.
enum EFormat : std::uint32_t {
    eFormatPkcs1Der = 2, ///< bare DER of RSAPublicKey and RSAPrivateKey (RFC 8017)
};

/// The RSA key pair of a machine and its two files. Failures are ErrorExceptions with the code
/// error.qncertificates.parameter.invalid, or those of the RSA layer.
class CertificateKeys final : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    /// Loads the pair if both files exist. Throws if either cannot be read or the two keys do not
    /// match. If a file is certainly missing, or with `regenerate`, the object has no keys until
    /// set_keys(). Throws for an unknown format.
    CertificateKeys(const std::string& publicKeyFile, const std::string& privateKeyFile,
                    EFormat format, bool regenerate);
    ~CertificateKeys() override = default;

    /// Makes a new pair of 2048 bits and writes it into both files in place. Opens both exclusively
    /// and reads them first: throws, and changes neither, if one cannot be read or written, or if
    /// they hold a usable pair. A failed write leaves files that do not load; a failure removes the
    /// files that it created.
    void set_keys(EFormat format);

    /// PKCS#1 DER. Empty until keys are loaded or made.
    qncrypto::Key get_private_key() const { return private_key_; }
    qncrypto::Key get_public_key() const { return public_key_; }

  private:
    /// Throws qncertificates_parameter_invalid unless the keys match.
    void check_pair(const qncrypto::Key& private_key, const qncrypto::Key& public_key) const;
    bool is_pair(const qncrypto::Key& private_key, const qncrypto::Key& public_key) const;

    std::string public_key_file_;
    std::string private_key_file_;
    qncrypto::Key public_key_;
    qncrypto::Key private_key_;
};

} // namespace qncertificates
