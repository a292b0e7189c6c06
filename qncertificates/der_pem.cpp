#include "qncertificates/der_pem.h"

#include <algorithm>
#include <array>
#include <string_view>

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
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
constexpr std::string_view head = "-----BEGIN ENCIPHERED PASSWORD-----\n";
constexpr std::string_view tail = "-----END ENCIPHERED PASSWORD-----\n";
constexpr std::size_t bytes_of_line = 48;

template <class Byte>
void release(Byte* memory) {
    OPENSSL_free(memory);
}

/// Decodes a block exactly as convert_DER_to_PEM() writes it, faster than the general parser. The
/// result is right because converting it back yields the input; otherwise returns false and leaves
/// `out` unchanged.
bool decode_own_form(const std::vector<unsigned char>& in, std::vector<unsigned char>& out) {
    const OpensslHandle context(EVP_ENCODE_CTX_new(), EVP_ENCODE_CTX_free);
    if (!context || in.size() < head.size() + tail.size()) {
        return false;
    }
    const std::size_t size = in.size() - head.size() - tail.size();
    std::vector<unsigned char> bytes(size);
    int count = 0;
    EVP_DecodeInit(context.get());
    if (EVP_DecodeUpdate(context.get(), bytes.data(), &count, in.data() + head.size(),
                         qncore::safe_cast<int>(size)) < 0) {
        return false;
    }
    bytes.resize(static_cast<std::size_t>(count));
    std::vector<unsigned char> text;
    convert_DER_to_PEM(bytes, text);
    if (text != in) {
        return false;
    }
    out.swap(bytes);
    return true;
}

} // namespace

void convert_DER_to_PEM(const std::vector<unsigned char>& in, std::vector<unsigned char>& out) {
    std::vector<unsigned char> text(head.begin(), head.end());
    for (std::size_t at = 0; at < in.size(); at += bytes_of_line) {
        std::array<unsigned char, bytes_of_line / 3 * 4 + 1> line{};
        const auto bytes = static_cast<int>(std::min(bytes_of_line, in.size() - at));
        const auto end = line.begin() + EVP_EncodeBlock(line.data(), in.data() + at, bytes);
        *end = '\n'; // replaces the terminator
        text.insert(text.end(), line.begin(), end + 1);
    }
    text.insert(text.end(), tail.begin(), tail.end());
    out.swap(text);
}

void convert_PEM_to_DER(const std::vector<unsigned char>& in, std::vector<unsigned char>& out) {
    const auto location = QN_LOCATION("qncertificates::convert_PEM_to_DER()");
    const auto& code = error::qncertificates_parameter_invalid;
    if (decode_own_form(in, out)) {
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
