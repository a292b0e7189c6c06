#include "qncertificates/certificate_keys.h"

#include <algorithm>

#include "platform/file_system.h"
#include "qncertificates/errors.h"
#include "qncore/error_composer.h"
#include "qncrypto/rsa.h"
#include "qnfile/file_stream.h"

namespace qncertificates {
namespace {

using qncrypto::Key;
using qncrypto::RsaContext;

constexpr unsigned int key_bits = 2048;
constexpr std::uint64_t largest_key_file = 65536;

void check_format(EFormat format, const char* function) {
    if (format != eFormatPkcs1Der) {
        qncore::ErrorComposer("Unknown format {@format} of key files")
            .param("format", format)
            .throw_error(error::qncertificates_parameter_invalid, QN_LOCATION(function));
    }
}

Key read_key(const std::string& file) {
    const auto stream = qnfile::FileReadStream::create(file, qnfile::share_read, qnfile::flag_none);
    const std::uint64_t size = stream->available();
    Key key(static_cast<std::size_t>(std::min(size, largest_key_file)));
    if (size > largest_key_file || stream->read(key.data(), key.size()) != size) {
        qncore::ErrorComposer("The key file \"{@filename}\" is too long or changes while read")
            .param("filename", file)
            .throw_error(error::qncertificates_parameter_invalid,
                         QN_LOCATION("qncertificates::CertificateKeys::load()"));
    }
    return key;
}

/// A key file open for its new content, held against all other openers.
class KeyFile {
  public:
    explicit KeyFile(const std::string& name)
        : name_(name) {
        const auto handle = platform::open_key_file(name_);
        check(handle.error());
        handle_ = *handle;
    }
    KeyFile(const KeyFile&) = delete;
    KeyFile& operator=(const KeyFile&) = delete;
    ~KeyFile() { platform::close_file(handle_); }

    void write(const Key& key) {
        const auto written =
            platform::write_file(handle_, key.data(), static_cast<std::uint32_t>(key.size()));
        check(written.error());
        if (*written != key.size()) {
            throw_not_written({});
        }
        check(platform::set_end_of_file(handle_));
        check(platform::flush_file(handle_));
    }

  private:
    void check(platform::SystemError failure) const {
        if (failure) {
            throw_not_written(qncore::ErrorInfo::from_system_error(location(), failure));
        }
    }

    [[noreturn]] void throw_not_written(qncore::ErrorInfoPtr cause) const {
        qncore::ErrorComposer("Unable to write the key file \"{@filename}\"")
            .param("filename", name_)
            .throw_error(error::qncertificates_parameter_invalid, location(), std::move(cause));
    }

    static qncore::SourceLocation location() {
        return QN_LOCATION("qncertificates::CertificateKeys::set_keys()");
    }

    const std::string& name_;
    platform::FileHandle handle_ = platform::invalid_file;
};

} // namespace

CertificateKeys::CertificateKeys(std::string publicKeyFile, std::string privateKeyFile,
                                 EFormat format, bool regenerate)
    : publicKeyFile_(std::move(publicKeyFile))
    , privateKeyFile_(std::move(privateKeyFile)) {
    check_format(format, "qncertificates::CertificateKeys::CertificateKeys()");
    if (!regenerate && platform::exists(publicKeyFile_) && platform::exists(privateKeyFile_)) {
        load();
    }
}

void CertificateKeys::load() {
    Key publicKey = read_key(publicKeyFile_);
    Key privateKey = read_key(privateKeyFile_);
    if (RsaContext::public_key_from_private_key(privateKey) != publicKey) {
        qncore::ErrorComposer(
            "The key files \"{@publicKeyFile}\" and \"{@privateKeyFile}\" are no pair")
            .param("publicKeyFile", publicKeyFile_)
            .param("privateKeyFile", privateKeyFile_)
            .throw_error(error::qncertificates_parameter_invalid,
                         QN_LOCATION("qncertificates::CertificateKeys::load()"));
    }
    publicKey_.swap(publicKey);
    privateKey_.swap(privateKey);
}

void CertificateKeys::set_keys(EFormat format) {
    check_format(format, "qncertificates::CertificateKeys::set_keys()");
    Key privateKey;
    Key publicKey;
    RsaContext::create_key_pair(key_bits, privateKey, publicKey);
    // Who may not read and write one of the files neither changes nor makes the other.
    for (const std::string* file : {&privateKeyFile_, &publicKeyFile_}) {
        if (platform::exists(*file)) {
            const KeyFile probe(*file);
        }
    }
    KeyFile privateFile(privateKeyFile_);
    KeyFile publicFile(publicKeyFile_);
    privateFile.write(privateKey);
    publicFile.write(publicKey);
    publicKey_.swap(publicKey);
    privateKey_.swap(privateKey);
}

} // namespace qncertificates
