#include "qncertificates/der_pem.h"

#include <algorithm>
#include <string_view>

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/pem.h>

#include "qncertificates/errors.h"
#include "qncore/error_exception.h"
#include "qncore/safe_cast.h"
#include "qncrypto/openssl_error.h"
#include "qncrypto/openssl_handles.h"

namespace qncertificates {

using qncrypto::OpensslHandle;
using qncrypto::throw_openssl_error;

namespace {

constexpr std::string_view label = "ENCIPHERED PASSWORD";

/// OpenSSL neither writes nor reads a block without a body.
constexpr std::string_view empty_block = "-----BEGIN ENCIPHERED PASSWORD-----\n"
                                         "-----END ENCIPHERED PASSWORD-----\n";

template <class Byte>
void release(Byte* memory) {
    OPENSSL_free(memory);
}

} // namespace

void convert_DER_to_PEM(const std::vector<unsigned char>& in, std::vector<unsigned char>& out) {
    if (in.empty()) {
        out.assign(empty_block.begin(), empty_block.end());
        return;
    }
    const OpensslHandle bio(BIO_new(BIO_s_mem()), BIO_free_all);
    if (!bio || PEM_write_bio(bio.get(), label.data(), "", in.data(),
                              qncore::safe_cast<long>(in.size())) < 1) {
        throw_openssl_error(error::qncertificates_parameter_invalid,
                            "Error writing enciphered password as PEM text",
                            QN_LOCATION("qncertificates::convert_DER_to_PEM()"));
    }
    const unsigned char* text = nullptr;
    const long size = BIO_get_mem_data(bio.get(), &text);
    out.assign(text, text + size);
}

void convert_PEM_to_DER(const std::vector<unsigned char>& in, std::vector<unsigned char>& out) {
    const auto location = QN_LOCATION("qncertificates::convert_PEM_to_DER()");
    const auto& code = error::qncertificates_parameter_invalid;
    if (std::equal(in.begin(), in.end(), empty_block.begin(), empty_block.end())) {
        out.clear();
        return;
    }
    const OpensslHandle bio(BIO_new_mem_buf(in.data(), qncore::safe_cast<int>(in.size())),
                            BIO_free_all);
    char* name = nullptr;
    char* header = nullptr;
    unsigned char* data = nullptr;
    long size = 0;
    if (!bio || PEM_read_bio(bio.get(), &name, &header, &data, &size) != 1) {
        throw_openssl_error(code, "The text of an enciphered password is not PEM text", location);
    }
    const OpensslHandle name_owner(name, release<char>);
    const OpensslHandle header_owner(header, release<char>);
    const OpensslHandle data_owner(data, release<unsigned char>);
    if (name != label || *header != '\0') {
        qncore::throw_error(code, "The PEM text is not that of an enciphered password", location);
    }
    out.assign(data, data + size);
}

} // namespace qncertificates
