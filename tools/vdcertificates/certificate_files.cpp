#include "tools/vdcertificates/certificate_files.h"

#include <ctime>
#include <optional>
#include <vector>

#include <openssl/decoder.h>
#include <openssl/err.h>
#include <openssl/pem.h>

#include "platform/file_system.h"
#include "platform/key_file.h"
#include "platform/permissions.h"
#include "tools/vdcertificates/input.h"
#include "tools/vdcertificates/openssl_handles.h"
#include "tools/vdcertificates/requests.h"

namespace tool {
namespace {

using enum Severity;
using Certificates = std::vector<CertificateHandle>;

constexpr std::size_t largest_file = std::size_t{16} << 20;

BioHandle reader_of(const Secret& text) {
    return BioHandle(BIO_new_mem_buf(text.text().data(), static_cast<int>(text.text().size())));
}

/// All certificates of a PEM file, or the one of a DER file.
Certificates parse_certificates(const Secret& text) {
    Certificates found;
    const BioHandle pem = reader_of(text);
    while (X509* certificate = PEM_read_bio_X509(pem.get(), nullptr, nullptr, nullptr)) {
        found.emplace_back(certificate);
    }
    if (found.empty()) {
        if (X509* certificate = d2i_X509_bio(reader_of(text).get(), nullptr)) {
            found.emplace_back(certificate);
        }
    }
    ERR_clear_error();
    return found;
}

/// A key of any kind and form, or null on failure. Never prompts for a password.
KeyHandle parse_key(const Secret& text, int selection, const std::string& password) {
    EVP_PKEY* key = nullptr;
    const std::unique_ptr<OSSL_DECODER_CTX, OpensslFree<OSSL_DECODER_CTX_free>> context(
        OSSL_DECODER_CTX_new_for_pkey(&key, nullptr, nullptr, nullptr, selection, nullptr,
                                      nullptr));
    if (!context || (!password.empty() &&
                     OSSL_DECODER_CTX_set_passphrase(
                         context.get(), reinterpret_cast<const unsigned char*>(password.data()),
                         password.size()) != 1)) {
        return nullptr;
    }
    OSSL_DECODER_from_bio(context.get(), reader_of(text).get());
    ERR_clear_error();
    return KeyHandle(key);
}

std::string date_of(const ASN1_TIME* time) {
    const BioHandle memory(BIO_new(BIO_s_mem()));
    ASN1_TIME_print_ex(memory.get(), time, ASN1_DTFLGS_ISO8601);
    char* text = nullptr;
    const long size = BIO_get_mem_data(memory.get(), &text);
    return {text, static_cast<std::size_t>(size)};
}

/// The files of one entry. Each is opened once.
class EntryFiles {
  public:
    EntryFiles(const Entry& entry, int days, Findings& findings)
        : entry_(entry)
        , days_(days)
        , findings_(findings) {}

    void check() {
        const auto& node = entry_.node;
        const auto public_text = open(node.publicKeyPath);
        const auto private_text = open(node.privateKeyPath);
        const auto certificate_text = open(node.certificatePath);
        const auto trusted_text = open(node.trustedCertificatePath);
        if (private_text) {
            check_private_permissions();
        }
        const Certificates chain = certificates(node.certificatePath, certificate_text);
        const Certificates trusted = certificates(node.trustedCertificatePath, trusted_text);
        const KeyHandle public_key = public_of(public_text);
        const KeyHandle private_key = private_of(private_text);
        check_pair(public_key.get(), private_key.get(),
                   chain.empty() ? nullptr : X509_get0_pubkey(chain.front().get()));
        if (!chain.empty() && !trusted.empty()) {
            check_trust(chain, trusted);
        }
    }

  private:
    void add(Severity severity, const char* code, const std::string& message,
             const std::string& path) {
        findings_.add(severity, code, entry_, message, path);
    }

    std::optional<Secret> open(const std::string& path) {
        if (path.empty()) {
            return std::nullopt;
        }
        if (is_relative(path)) {
            add(warning, "path_relative",
                "has the relative path " + path +
                    ", which each program takes from its own directory: store the whole path",
                path);
        }
        try {
            Secret text = read_file(path, largest_file);
            check_writers(path);
            return text;
        } catch (const UsageError& error) {
            const bool is_missing = platform::check_existence(path).is_not_found();
            add(problem, is_missing ? "named_file_missing" : "named_file_unreadable",
                "names " + path + ": " + error.what(), path);
            return std::nullopt;
        }
    }

    void check_writers(const std::string& path) {
        if (findings_.holds(platform::is_writable_for_all(path), path)) {
            add(problem, "named_file_writable",
                "names " + path +
                    ", which every account may change: take the permission to write from others",
                path);
        }
    }

    void check_private_permissions() {
        const std::string& path = entry_.node.privateKeyPath;
        if (findings_.holds(platform::is_open_to_others(path), path)) {
            add(warning, "private_key_open",
                "names the private key " + path +
                    ", which every account may open: take all "
                    "permissions from others",
                path);
        }
    }

    Certificates certificates(const std::string& path, const std::optional<Secret>& text) {
        if (!text) {
            return {};
        }
        Certificates found = parse_certificates(*text);
        if (found.empty()) {
            add(problem, "certificate_unreadable",
                "names " + path + ", which holds no certificate (PEM or DER)", path);
        } else {
            check_dates(*found.front(), path);
        }
        return found;
    }

    void check_dates(const X509& certificate, const std::string& path) {
        const ASN1_TIME* begin = X509_get0_notBefore(&certificate);
        const ASN1_TIME* end = X509_get0_notAfter(&certificate);
        std::time_t later = std::time(nullptr) + std::time_t{days_} * 24 * 60 * 60;
        if (X509_cmp_current_time(begin) > 0) {
            add(problem, "certificate_not_yet_valid",
                "names " + path + ", which is valid from " + date_of(begin) +
                    " on: look at the clock, or wait",
                path);
        } else if (X509_cmp_current_time(end) < 0) {
            add(problem, "certificate_expired",
                "names " + path + ", which has expired at " + date_of(end) + ": renew it", path);
        } else if (X509_cmp_time(end, &later) < 0) {
            add(warning, "certificate_expires",
                "names " + path + ", which expires at " + date_of(end) + ": renew it", path);
        }
    }

    KeyHandle public_of(const std::optional<Secret>& text) {
        KeyHandle key = text ? parse_key(*text, EVP_PKEY_PUBLIC_KEY, "") : nullptr;
        if (text && !key) { // the file may hold a certificate instead
            const Certificates found = parse_certificates(*text);
            key.reset(found.empty() ? nullptr : X509_get_pubkey(found.front().get()));
        }
        if (text && !key) {
            add(problem, "public_key_unreadable",
                "names " + entry_.node.publicKeyPath + ", which holds no public key",
                entry_.node.publicKeyPath);
        }
        return key;
    }

    KeyHandle private_of(const std::optional<Secret>& text) {
        const std::string& password = entry_.node.password;
        KeyHandle key = text ? parse_key(*text, EVP_PKEY_KEYPAIR, password) : nullptr;
        if (text && !key && entry_.password_is_readable) {
            add(problem, "private_key_unreadable",
                "names the private key " + entry_.node.privateKeyPath +
                    (password.empty() ? ", which cannot be opened, and has no password for it"
                                      : ", which cannot be opened with the stored password") +
                    ": set the right password or file",
                entry_.node.privateKeyPath);
        }
        return key;
    }

    void check_pair(EVP_PKEY* public_key, EVP_PKEY* private_key, EVP_PKEY* certified) {
        const auto differ = [](const EVP_PKEY* left, const EVP_PKEY* right) {
            return left != nullptr && right != nullptr && EVP_PKEY_eq(left, right) != 1;
        };
        const auto& node = entry_.node;
        if (differ(private_key, certified)) {
            add(problem, "key_not_of_certificate",
                "has a private key, " + node.privateKeyPath +
                    ", that does not belong to its certificate " + node.certificatePath,
                node.privateKeyPath);
        }
        if (differ(public_key, private_key != nullptr ? private_key : certified)) {
            add(problem, "public_key_of_another",
                "has a public key, " + node.publicKeyPath + ", that belongs to another key",
                node.publicKeyPath);
        }
        ERR_clear_error();
    }

    /// Dates are checked elsewhere.
    void check_trust(const Certificates& chain, const Certificates& trusted) {
        const StoreHandle store(X509_STORE_new());
        const StoreContextHandle context(X509_STORE_CTX_new());
        const std::unique_ptr<STACK_OF(X509),
                              decltype([](STACK_OF(X509) * stack) { sk_X509_free(stack); })>
            others(sk_X509_new_null());
        for (const CertificateHandle& certificate : trusted) {
            X509_STORE_add_cert(store.get(), certificate.get());
        }
        for (const CertificateHandle& certificate : chain) {
            sk_X509_push(others.get(), certificate.get());
        }
        X509_STORE_set_flags(store.get(), X509_V_FLAG_PARTIAL_CHAIN | X509_V_FLAG_NO_CHECK_TIME);
        X509_STORE_CTX_init(context.get(), store.get(), chain.front().get(), others.get());
        if (X509_verify_cert(context.get()) != 1) {
            const auto& node = entry_.node;
            add(problem, "certificate_not_trusted",
                "has a certificate, " + node.certificatePath +
                    ", that does not verify against the trusted one, " +
                    node.trustedCertificatePath + ": " +
                    X509_verify_cert_error_string(X509_STORE_CTX_get_error(context.get())),
                node.certificatePath);
        }
        ERR_clear_error();
    }

    const Entry& entry_;
    int days_;
    Findings& findings_;
};

} // namespace

void check_certificate_files(const Entry& entry, int days, Findings& findings) {
    EntryFiles(entry, days, findings).check();
}

} // namespace tool
