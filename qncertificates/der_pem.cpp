#include "qncertificates/der_pem.h"

#include <memory>
#include <string_view>

#include <openssl/bio.h>
#include <openssl/pem.h>

#include "qncertificates/errors.h"
#include "qncore/error_exception.h"
#include "qncore/safe_cast.h"
#include "qncrypto/openssl_error.h"

namespace qncertificates {
namespace {

constexpr const char* label = "ENCIPHERED PASSWORD";

struct Free {
    void operator()(BIO* bio) const noexcept { BIO_free_all(bio); }
    void operator()(void* memory) const noexcept { OPENSSL_free(memory); }
};
using Bio = std::unique_ptr<BIO, Free>;
template <class T>
using OpensslMemory = std::unique_ptr<T, Free>;

[[noreturn]] void throw_pem_error(const char* message, const qncore::SourceLocation& location) {
    qncore::throw_error(error::qncertificates_parameter_invalid, message, location,
                        qncrypto::openssl_error_info(qncrypto::openssl_error_depth));
}

} // namespace

void convert_DER_to_PEM(const std::vector<unsigned char>& in, std::vector<unsigned char>& out) {
    const auto location = QN_LOCATION("qncertificates::convert_DER_to_PEM()");
    const Bio bio(BIO_new(BIO_s_mem()));
    if (!bio ||
        PEM_write_bio(bio.get(), label, "", in.data(), qncore::safe_cast<int>(in.size())) == 0) {
        throw_pem_error("Unable to write the bytes as PEM text", location);
    }
    char* text = nullptr;
    const long length = BIO_get_mem_data(bio.get(), &text);
    out.assign(text, text + length);
}

void convert_PEM_to_DER(const std::vector<unsigned char>& in, std::vector<unsigned char>& out) {
    const auto location = QN_LOCATION("qncertificates::convert_PEM_to_DER()");
    const Bio bio(BIO_new_mem_buf(in.data(), qncore::safe_cast<int>(in.size())));
    char* foundLabel = nullptr;
    char* headers = nullptr;
    unsigned char* bytes = nullptr;
    long length = 0;
    if (!bio || PEM_read_bio(bio.get(), &foundLabel, &headers, &bytes, &length) == 0) {
        throw_pem_error("The text is not PEM text", location);
    }
    const OpensslMemory<char> labelOwner(foundLabel);
    const OpensslMemory<char> headersOwner(headers);
    const OpensslMemory<unsigned char> bytesOwner(bytes);
    if (std::string_view(foundLabel) != label || !std::string_view(headers).empty()) {
        throw_pem_error("The PEM text is not an enciphered password", location);
    }
    out.assign(bytes, bytes + length);
}

} // namespace qncertificates
