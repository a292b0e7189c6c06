#include "qncertificates/certificate_keys.h"

#include "qncertificates/errors.h"
#include "qncertificates/key_file.h"
#include "qncore/error_composer.h"
#include "qncrypto/openssl_error.h"
#include "qncrypto/rsa.h"

namespace qncertificates {

using qncore::ErrorComposer;
using qncrypto::Key;
using qncrypto::RsaContext;

namespace {

constexpr unsigned int key_bits = 2048;

void check_format(EFormat format, const qncore::SourceLocation& location) {
    if (format != eFormatPkcs1Der) {
        ErrorComposer("Unknown format of key files: {@format}")
            .param("format", static_cast<std::uint32_t>(format))
            .throw_error(error::qncertificates_parameter_invalid, location);
    }
}

/// The public key of the private key that the file holds.
Key public_key_of(const Key& private_key, const std::string& filename,
                  const qncore::SourceLocation& location) {
    if (private_key.size() > largest_key_file) {
        ErrorComposer("Key file \"{@filename}\" is too large")
            .param("filename", filename)
            .throw_error(error::qncertificates_parameter_invalid, location);
    }
    // Errors that earlier calls of this thread left say nothing about the key.
    while (qncrypto::openssl_error_info(qncrypto::openssl_error_depth)) {
    }
    try {
        return RsaContext::public_key_from_private_key(private_key);
    } catch (const qncore::ErrorException& exception) {
        if (qncrypto::is_openssl_fault(exception.info())) {
            throw; // says nothing about the key
        }
        ErrorComposer("Key file \"{@filename}\" does not hold a private key")
            .param("filename", filename)
            .throw_with_nested_exception(error::qncertificates_parameter_invalid, location,
                                         exception);
    }
}

} // namespace

CertificateKeys::CertificateKeys(const std::string& publicKeyFile,
                                 const std::string& privateKeyFile, EFormat format, bool regenerate)
    : public_key_file_(publicKeyFile)
    , private_key_file_(privateKeyFile) {
    check_format(format, QN_LOCATION("qncertificates::CertificateKeys::CertificateKeys()"));
    if (!regenerate && !is_missing(public_key_file_) && !is_missing(private_key_file_)) {
        Key private_key = read_key_file(private_key_file_);
        Key public_key = read_key_file(public_key_file_);
        check_pair(private_key, public_key);
        private_key_.swap(private_key);
        public_key_.swap(public_key);
    }
}

void CertificateKeys::check_pair(const Key& private_key, const Key& public_key) const {
    const auto location = QN_LOCATION("qncertificates::CertificateKeys::check_pair()");
    // A public key has only one DER form: bytes that differ are corrupt or another key.
    if (!(public_key_of(private_key, private_key_file_, location) == public_key)) {
        ErrorComposer("Key file \"{@publicKeyFile}\" does not hold the public key to the private "
                      "key in \"{@privateKeyFile}\"")
            .param("publicKeyFile", public_key_file_)
            .param("privateKeyFile", private_key_file_)
            .throw_error(error::qncertificates_parameter_invalid, location);
    }
}

bool CertificateKeys::is_pair(const Key& private_key, const Key& public_key) const {
    try {
        check_pair(private_key, public_key);
        return true;
    } catch (const qncore::ErrorException& exception) {
        if (exception.matches(error::qncertificates_parameter_invalid)) {
            return false;
        }
        throw;
    }
}

void CertificateKeys::set_keys(EFormat format) {
    const auto location = QN_LOCATION("qncertificates::CertificateKeys::set_keys()");
    check_format(format, location);
    KeyFileWriter private_file(private_key_file_);
    KeyFileWriter public_file(public_key_file_);
    // The failure that led here may have been temporary: only an unusable pair is replaced.
    const Key old_private_key = private_file.content();
    if (is_pair(old_private_key, public_file.content())) {
        ErrorComposer("Key files \"{@publicKeyFile}\" and \"{@privateKeyFile}\" hold a usable pair")
            .param("publicKeyFile", public_key_file_)
            .param("privateKeyFile", private_key_file_)
            .throw_error(error::qncertificates_parameter_invalid, location);
    }
    Key private_key;
    Key public_key;
    RsaContext::create_key_pair(key_bits, private_key, public_key);
    private_file.replace_content(private_key);
    public_file.replace_content(public_key);
    private_file.keep();
    public_file.keep();
    private_key_.swap(private_key);
    public_key_.swap(public_key);
}

} // namespace qncertificates
