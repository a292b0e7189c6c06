#include "qncertificates/certificate_keys.h"

#include <optional>

#include "platform/file_system.h"
#include "qncertificates/errors.h"
#include "qncertificates/key_file.h"
#include "qncore/error_composer.h"
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

/// The public key that belongs to what the file of the private key holds.
Key public_key_of(const Key& private_key, const std::string& filename,
                  const qncore::SourceLocation& location) {
    try {
        return RsaContext::public_key_from_private_key(private_key);
    } catch (const std::exception& exception) {
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
    if (!regenerate && platform::exists(public_key_file_) && platform::exists(private_key_file_)) {
        load();
    }
}

void CertificateKeys::load() {
    const auto location = QN_LOCATION("qncertificates::CertificateKeys::load()");
    Key private_key = read_key_file(private_key_file_);
    Key public_key = read_key_file(public_key_file_);
    // The public key has one DER form only: what differs is corrupt, or another's.
    if (!(public_key_of(private_key, private_key_file_, location) == public_key)) {
        ErrorComposer("Key file \"{@publicKeyFile}\" does not hold the public key to the private "
                      "key in \"{@privateKeyFile}\"")
            .param("publicKeyFile", public_key_file_)
            .param("privateKeyFile", private_key_file_)
            .throw_error(error::qncertificates_parameter_invalid, location);
    }
    private_key_.swap(private_key);
    public_key_.swap(public_key);
}

void CertificateKeys::set_keys(EFormat format) {
    check_format(format, QN_LOCATION("qncertificates::CertificateKeys::set_keys()"));
    // Both are open before either is written, and one that exists is opened before the other is
    // made: whoever is refused the one leaves no trace in place of the other.
    std::optional<KeyFileWriter> private_file;
    std::optional<KeyFileWriter> public_file;
    if (platform::exists(private_key_file_)) {
        private_file.emplace(private_key_file_);
    }
    public_file.emplace(public_key_file_);
    if (!private_file) {
        private_file.emplace(private_key_file_);
    }
    Key private_key;
    Key public_key;
    RsaContext::create_key_pair(key_bits, private_key, public_key);
    private_file->replace_content(private_key);
    public_file->replace_content(public_key);
    private_key_.swap(private_key);
    public_key_.swap(public_key);
}

} // namespace qncertificates
