#pragma once

#include <string>

#include "qncore/ref_counted.h"
#include "qncrypto/key.h"

namespace qncertificates {

/// The form of key files.
enum EFormat {
    eFormatPkcs1Der = 2, ///< RSAPrivateKey and RSAPublicKey of RFC 8017, DER, one in each file
};

/// The machine's RSA key pair and the two files that keep it. Failures are ErrorExceptions with a
/// code below error.qncertificates or those of the layers below. One thread at a time may set
/// keys; who serialises the processes is the caller's business.
class CertificateKeys final : public qncore::RefCounted<qncore::AtomicRefCount> {
  public:
    /// Loads the pair; throws when a file cannot be read, is no key, or the two are no pair. Where
    /// either file is missing, and when `regenerate` is set, nothing is read and the object has no
    /// keys until set_keys().
    CertificateKeys(std::string publicKeyFile, std::string privateKeyFile, EFormat format,
                    bool regenerate);

    /// Makes a new RSA-2048 pair and stores it in both files. Neither file changes unless both can
    /// be read and written.
    void set_keys(EFormat format);

    /// The keys as PKCS#1 DER; empty when there are none.
    qncrypto::Key get_private_key() const { return privateKey_; }
    qncrypto::Key get_public_key() const { return publicKey_; }

  private:
    ~CertificateKeys() override = default;

    void load();

    std::string publicKeyFile_;
    std::string privateKeyFile_;
    qncrypto::Key publicKey_;
    qncrypto::Key privateKey_;
};

} // namespace qncertificates
