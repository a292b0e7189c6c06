#include "tools/vdcertificates/cms.h"

#include <algorithm>
#include <climits>

#include <openssl/err.h>
#include <openssl/pem.h>

#include "tools/vdcertificates/exit_status.h"
#include "tools/vdcertificates/openssl_handles.h"

namespace tool {

namespace {

constexpr int iterations = 600'000; ///< of PBKDF2, against guessing
constexpr std::size_t piece = 65536;

/// Throws OpenSSL's last error and empties its queue.
void require(bool success, const char* message) {
    if (!success) {
        const char* reason = ERR_reason_error_string(ERR_peek_last_error());
        ERR_clear_error();
        throw Failure(std::string(message) + ": " +
                      (reason != nullptr ? reason : "no reason given"));
    }
}

BioHandle reader_of(std::string_view text) {
    if (text.size() > INT_MAX) {
        throw Failure("the file is too large");
    }
    BioHandle bio(BIO_new_mem_buf(text.data(), static_cast<int>(text.size())));
    require(bio != nullptr, "cannot read from memory");
    return bio;
}

/// Accepts any of the three forms.
CmsHandle parse(std::string_view message) {
    using Parse = CMS_ContentInfo* (*)(BIO*);
    constexpr Parse forms[] = {
        [](BIO* bio) { return SMIME_read_CMS(bio, nullptr); },
        [](BIO* bio) { return PEM_read_bio_CMS(bio, nullptr, nullptr, nullptr); },
        [](BIO* bio) { return d2i_CMS_bio(bio, nullptr); },
    };
    for (const Parse form : forms) {
        CmsHandle cms(form(reader_of(message).get()));
        if (cms && OBJ_obj2nid(CMS_get0_type(cms.get())) == NID_pkcs7_enveloped) {
            return cms;
        }
    }
    ERR_clear_error();
    throw Failure("it is no CMS enveloped data (S/MIME, PEM or DER)");
}

Secret written_to(BIO* memory) {
    char* bytes = nullptr;
    const long size = BIO_get_mem_data(memory, &bytes);
    Secret text;
    text.append({bytes, static_cast<std::size_t>(size)});
    return text;
}

} // namespace

Secret encipher_for_password(std::string_view text, const Secret& password) {
    constexpr unsigned flags = CMS_BINARY | CMS_PARTIAL;
    const CmsHandle cms(CMS_encrypt(nullptr, nullptr, EVP_aes_256_cbc(), flags));
    require(cms != nullptr, "cannot encipher");
    auto* copy =
        static_cast<unsigned char*>(OPENSSL_memdup(password.text().data(), password.text().size()));
    require(copy != nullptr, "cannot encipher");
    // The message takes ownership of the copy, and wipes it.
    require(CMS_add0_recipient_password(cms.get(), iterations, NID_undef, NID_undef, copy,
                                        static_cast<ossl_ssize_t>(password.text().size()),
                                        nullptr) != nullptr,
            "cannot encipher");
    // Written piece by piece, so that no buffer of OpenSSL holds the clear text.
    BIO* const data = CMS_dataInit(cms.get(), nullptr);
    require(data != nullptr, "cannot encipher");
    const BioHandle chain(data);
    while (!text.empty()) {
        const int part = static_cast<int>(std::min(text.size(), piece));
        require(BIO_write(data, text.data(), part) == part, "cannot encipher");
        text.remove_prefix(static_cast<std::size_t>(part));
    }
    require(BIO_flush(data) == 1 && CMS_dataFinal(cms.get(), data) == 1, "cannot encipher");
    const BioHandle memory(BIO_new(BIO_s_mem()));
    require(memory != nullptr && SMIME_write_CMS(memory.get(), cms.get(), nullptr, 0) == 1,
            "cannot encipher");
    return written_to(memory.get());
}

Secret decipher_with_password(std::string_view message, const Secret& password) {
    const CmsHandle cms = parse(message);
    Secret copy; // the interface takes it as changeable
    copy.append(password.text());
    require(CMS_decrypt_set1_password(cms.get(), reinterpret_cast<unsigned char*>(copy.data()),
                                      static_cast<ossl_ssize_t>(copy.text().size())) == 1,
            "it cannot be deciphered; is the password right?");
    const BioHandle chain(CMS_dataInit(cms.get(), nullptr));
    require(chain != nullptr, "it cannot be deciphered");
    Secret text;
    std::size_t used = 0;
    for (int count = 1; count > 0; used += static_cast<std::size_t>(count > 0 ? count : 0)) {
        text.resize(used + piece);
        count = BIO_read(chain.get(), text.data() + used, static_cast<int>(piece));
        require(count >= 0, "it cannot be deciphered");
    }
    require(BIO_get_cipher_status(chain.get()) == 1, "it cannot be deciphered");
    text.resize(used);
    return text;
}

} // namespace tool
