#include <algorithm>
#include <new>
#include <thread>

#include <gtest/gtest.h>
#include <openssl/err.h>

#include "qncrypto/rsa_validation.h"
#include "tests/qncrypto/bare_openssl.h"
#include "tests/support/failure.h"

namespace qncrypto {
namespace {

using namespace test;
using qncore::ErrorInfoPtr;

const std::string codes = "error.qncrypto.rsa.";
const std::string private_context_of = "|qncrypto::RsaPrivateContext::";
const std::string public_context_of = "|qncrypto::RsaPublicContext::";
const std::string unknown_padding_report =
    codes +
    "padding.unknown|qncrypto::throw_unknown_rsa_padding()|Unknown RSA padding enum value: 4";
const std::string large_padding_text =
    "Specified padding mode too large for modulus of RSA key.  ModulusSize: 40, Padding: 2 (Size: "
    "42)";
constexpr auto unknown_padding = static_cast<RsaPadding>(4);
constexpr auto unknown_hash = static_cast<HashAlgorithm>(6);

class Operations : public testing::Test {
  protected:
    Operations() { ERR_clear_error(); }

    Key signature_of(const Bytes& digest) const {
        Key out;
        pair.private_context().sign(digest.data(), &out, HashAlgorithm::sha256, RsaPadding::pkcs1,
                                    nullptr);
        return out;
    }

    const KeyPair& pair = key_pair();
    const RsaPrivateContext private_context = pair.private_context();
    const RsaPublicContext public_context = pair.public_context();
    const std::size_t modulus = private_context.modulus_size();
};

TEST_F(Operations, BlocksAreThoseOfOpenssl) {
    const Rsa rsa = pair.rsa();
    Bytes foreign(modulus);
    const std::tuple<RsaPadding, int, int, std::size_t> cases[] = {
        {RsaPadding::pkcs1, RSA_PKCS1_PADDING, 0, 11},
        {RsaPadding::pkcs1, RSA_PKCS1_PADDING, 117, 11},
        {RsaPadding::none, RSA_NO_PADDING, 128, 0},
        {RsaPadding::oaep, RSA_PKCS1_OAEP_PADDING, 86, 42}};
    for (const auto& [padding, number, size, taken] : cases) {
        SCOPED_TRACE(number);
        const Bytes data = some_bytes(static_cast<std::size_t>(size));
        EXPECT_EQ(RsaContext::padding_size(padding, nullptr), taken);
        EXPECT_EQ(public_context.max_data_size(padding), modulus - taken);
        Key block;
        Key plain;
        EXPECT_EQ(public_context.encrypt(data.data(), data.size(), &block, padding), 128);
        EXPECT_EQ(RSA_private_decrypt(128, block.data(), foreign.data(), rsa.get(), number), size);
        EXPECT_TRUE(std::equal(data.begin(), data.end(), foreign.begin()));
        RSA_public_encrypt(size, data.data(), foreign.data(), rsa.get(), number);
        EXPECT_EQ(private_context.decrypt(foreign.data(), modulus, &plain, padding, nullptr), size);
        EXPECT_EQ(bytes_of(plain), data);
        if (padding != RsaPadding::oaep) {
            RSA_private_encrypt(size, data.data(), foreign.data(), rsa.get(), number);
            EXPECT_EQ(private_context.encrypt(data.data(), data.size(), &block, padding), 128);
            EXPECT_EQ(bytes_of(block), foreign);
            EXPECT_EQ(public_context.decrypt(block.data(), modulus, &plain, padding, nullptr),
                      size);
            EXPECT_EQ(bytes_of(plain), data);
        }
    }
}

TEST_F(Operations, WithoutAnOutputTheModulusSizeIsReturnedAndNothingIsChecked) {
    for (const RsaPadding padding : {RsaPadding::oaep, RsaPadding::pss, unknown_padding}) {
        EXPECT_EQ(private_context.encrypt(nullptr, 9999, nullptr, 0, padding), 128);
        EXPECT_EQ(private_context.encrypt(nullptr, 9999, nullptr, padding), 128);
        EXPECT_EQ(public_context.encrypt(nullptr, 9999, nullptr, 0, padding), 128);
        EXPECT_EQ(public_context.encrypt(nullptr, 9999, nullptr, padding), 128);
        EXPECT_EQ(private_context.sign(nullptr, nullptr, 0, unknown_hash, padding, nullptr), 128);
    }
}

TEST_F(Operations, EncryptionIsRefused) {
    const RsaPublicContext tiny(tiny_public_key().data(), tiny_public_key().size());
    const Bytes data = some_bytes(10);
    Key out;
    const auto validate = [](const RsaContext& context, RsaPadding padding, std::size_t size,
                             std::size_t room) {
        return [=, &context] { validate_rsa_encrypt_params(context, padding, size, room); };
    };
    const auto encrypt = [&](const auto& context, RsaPadding padding, std::size_t size) {
        return [&, padding, size] { context.encrypt(data.data(), size, &out, padding); };
    };
    const std::string by = "|qncrypto::validate_rsa_encrypt_params()";
    support::check_failures({
        {validate(public_context, RsaPadding::pss, 999, 0), codes + "padding.unsupported" + by},
        {validate(public_context, unknown_padding, 999, 0), unknown_padding_report},
        {validate(tiny, RsaPadding::oaep, 999, 0),
         codes + "padding.size" + by + "|" + large_padding_text},
        {validate(public_context, RsaPadding::none, 999, 127),
         codes + "cipherDataSize" + by +
             "|Cipher buffer size too small for RSA key.  BufferSize: 127, ModulusSize: 128"},
        // Required: a placeholder that no parameter answers, and a parenthesis that none opens.
        {validate(public_context, RsaPadding::pkcs1, 118, 129),
         codes + "plainDataSize" + by +
             "|Plaintext data size too big for RSA key and padding.  DataSize: 118, MaxDataSize: "
             "{@maxData})"},
        // Required: the text speaks of PKCS#1 too, which stays allowed.
        {encrypt(private_context, RsaPadding::oaep, 999),
         codes + "padding.unsupported" + private_context_of +
             "encrypt()|Padding with PKCS#1 and OAEP only supported for encryption with public "
             "key"},
        {encrypt(private_context, RsaPadding::pss, 10), codes + "padding.unsupported" + by},
        // Too short without padding: OpenSSL's own refusal.
        {encrypt(private_context, RsaPadding::none, 10),
         codes + "encryption" + private_context_of + "encrypt()", openssl},
        {encrypt(public_context, RsaPadding::none, 10),
         codes + "encryption" + public_context_of + "encrypt()", openssl},
        {[&] { tiny.max_data_size(unknown_padding); }, unknown_padding_report},
    });
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(tiny.max_data_size(RsaPadding::oaep), 0U);
    EXPECT_EQ(tiny.max_data_size(RsaPadding::pkcs1), 29U);
    Bytes larger(200);
    EXPECT_EQ(private_context.encrypt(data.data(), 10, larger.data(), 200, RsaPadding::pkcs1), 128);
}

TEST_F(Operations, DecryptionTestsGoOnWithASlotAndTheLastFailureStays) {
    const RsaPublicContext tiny(tiny_public_key().data(), tiny_public_key().size());
    const std::string by = "|qncrypto::validate_rsa_decrypt_params()|";
    const std::string wrong_cipher = codes + "cipherDataSize" + by +
                                     "Invalid cipher data size for RSA key (must be modulus "
                                     "size).  DataSize: 129, ModulusSize: 128";
    const std::string short_buffer =
        codes + "plainDataSize" + by +
        "Insufficient plaintext buffer size for RSA key and padding.  BufferSize: 116, "
        "MaxDataSize: 117";
    const std::string large_padding = codes + "padding.size" + by + large_padding_text;
    ErrorInfoPtr slot;
    const auto check = [&](const RsaContext& context, RsaPadding padding, std::size_t cipher,
                           std::size_t room, const std::string& thrown, const std::string& left) {
        validate_rsa_decrypt_params(context, padding, cipher, room, &slot);
        support::check_failure(slot, {[] {}, left});
        support::check_failures(
            {{[&] { validate_rsa_decrypt_params(context, padding, cipher, room, nullptr); },
              thrown}});
    };
    check(public_context, RsaPadding::pkcs1, 129, 117, wrong_cipher, wrong_cipher);
    check(public_context, RsaPadding::pkcs1, 128, 116, short_buffer, short_buffer);
    check(public_context, RsaPadding::pkcs1, 129, 116, wrong_cipher, short_buffer);
    check(public_context, unknown_padding, 128, 128, unknown_padding_report,
          unknown_padding_report);
    check(public_context, unknown_padding, 129, 128, unknown_padding_report, wrong_cipher);
    check(tiny, RsaPadding::oaep, 40, 0, large_padding, large_padding);
    slot = {};
    validate_rsa_decrypt_params(public_context, RsaPadding::pkcs1, 128, 117, &slot);
    EXPECT_FALSE(slot);
    support::check_failures(
        {{[&] { validate_rsa_decrypt_params(public_context, RsaPadding::pss, 0, 0, &slot); },
          codes + "padding.unsupported|qncrypto::validate_rsa_decrypt_params()"}});
    EXPECT_FALSE(slot) << "required: thrown in spite of it";
    EXPECT_EQ(RsaContext::padding_size(unknown_padding, &slot), 0U);
    Bytes bytes(modulus);
    EXPECT_LT(public_context.decrypt(bytes.data(), modulus, bytes.data(), modulus, unknown_padding,
                                     &slot),
              0);
}

TEST_F(Operations, ABlockOfAWrongSizeIsRecordedAndStillDeciphered) {
    // A plain text that gives a block with a leading zero: OpenSSL takes the block without it.
    Bytes data = some_bytes(20);
    Bytes block(modulus);
    do {
        data[0] = static_cast<unsigned char>(data[0] + 1);
        data[1] = static_cast<unsigned char>(data[1] + (data[0] == 0 ? 1 : 0));
        private_context.encrypt(data.data(), 20, block.data(), modulus, RsaPadding::pkcs1);
    } while (block[0] != 0);
    Bytes plain(modulus);
    ErrorInfoPtr slot;
    EXPECT_EQ(public_context.decrypt(block.data() + 1, 127, plain.data(), plain.size(),
                                     RsaPadding::pkcs1, &slot),
              20);
    plain.resize(20);
    EXPECT_EQ(plain, data);
    support::check_failure(
        slot, {[] {}, codes + "cipherDataSize|qncrypto::validate_rsa_decrypt_params()"});
}

TEST_F(Operations, AFailedDecryptionWithASlotAssignsItsNegativeCount) {
    const Bytes garbage(modulus, 1);
    Key out(some_bytes(3).data(), 3);
    ErrorInfoPtr slot;
    EXPECT_THROW(private_context.decrypt(garbage.data(), modulus, &out, RsaPadding::oaep, &slot),
                 std::bad_alloc);
    support::check_failure(
        slot, {[] {}, codes + "decryption" + private_context_of + "decrypt()", openssl});
    EXPECT_EQ(bytes_of(out), some_bytes(3));
    support::check_failures({{[&](ErrorInfoPtr* error) {
                                  EXPECT_LT(public_context.decrypt(garbage.data(), modulus, nullptr,
                                                                   RsaPadding::pkcs1, error),
                                            0);
                              },
                              codes + "decryption" + public_context_of + "decrypt()", openssl}});
}

TEST_F(Operations, SignaturesAreThoseOfOpenssl) {
    const KeyPair& large = key_pair(1536);
    const Rsa rsa = large.rsa();
    const auto signer = large.private_context();
    const auto verifier = large.public_context();
    const EVP_MD* (*const digests[])() = {EVP_md5,    EVP_sha1,   EVP_sha224,
                                          EVP_sha256, EVP_sha384, EVP_sha512};
    for (std::uint32_t number = 0; number < std::size(digests); ++number) {
        SCOPED_TRACE(number);
        const EVP_MD* const md = digests[number]();
        const auto size = static_cast<unsigned int>(EVP_MD_size(md));
        const auto hash = static_cast<HashAlgorithm>(number);
        const Bytes digest = some_bytes(size);
        const Bytes other(size, 7);
        Bytes block(192);
        Bytes foreign(192);
        Key signature;
        unsigned int length = 0;
        const auto expect_verified_alone = [&](RsaPadding padding) {
            ErrorInfoPtr slot;
            const unsigned char* const bytes = foreign.data();
            EXPECT_TRUE(verifier.verify(bytes, 192, digest.data(), hash, padding, &slot));
            EXPECT_FALSE(verifier.verify(bytes, 192, other.data(), hash, padding, &slot));
            EXPECT_FALSE(slot);
            EXPECT_EQ(ERR_peek_error(), 0U);
        };
        RSA_sign(EVP_MD_type(md), digest.data(), size, foreign.data(), &length, rsa.get());
        EXPECT_EQ(signer.sign(digest.data(), &signature, hash, RsaPadding::pkcs1, nullptr), 192);
        EXPECT_EQ(bytes_of(signature), foreign);
        expect_verified_alone(RsaPadding::pkcs1);

        // A salt of the digest's size; ours is the longest.
        RSA_padding_add_PKCS1_PSS(rsa.get(), block.data(), digest.data(), md,
                                  RSA_PSS_SALTLEN_DIGEST);
        RSA_private_encrypt(192, block.data(), foreign.data(), rsa.get(), RSA_NO_PADDING);
        expect_verified_alone(RsaPadding::pss);
        EXPECT_EQ(signer.sign(digest.data(), &signature, hash, RsaPadding::pss, nullptr), 192);
        RSA_public_decrypt(192, signature.data(), block.data(), rsa.get(), RSA_NO_PADDING);
        EXPECT_EQ(
            RSA_verify_PKCS1_PSS(rsa.get(), digest.data(), md, block.data(), RSA_PSS_SALTLEN_MAX),
            1);
    }
}

TEST_F(Operations, SigningAndVerifyingAreRefused) {
    const Bytes digest = some_bytes(32);
    const std::tuple<std::size_t, RsaPadding, std::string> cases[] = {
        {127, RsaPadding::pkcs1, "cipherDataSize"},
        {129, RsaPadding::pkcs1, "cipherDataSize"},
        {128, RsaPadding::none, "signature.padding"},
        {128, RsaPadding::oaep, "signature.padding"},
        {128, unknown_padding, "signature.padding"},
        {128, RsaPadding::none, ""}, // with a hash that is unknown, too
    };
    for (const auto& [size, padding, code] : cases) {
        Bytes bytes(size);
        const HashAlgorithm hash = code.empty() ? unknown_hash : HashAlgorithm::sha256;
        const auto sign = [&, with = padding](ErrorInfoPtr* slot) {
            EXPECT_EQ(
                private_context.sign(digest.data(), bytes.data(), bytes.size(), hash, with, slot),
                0);
        };
        const auto verify = [&, with = padding](ErrorInfoPtr* slot) {
            EXPECT_FALSE(
                public_context.verify(bytes.data(), bytes.size(), digest.data(), hash, with, slot));
        };
        const std::string unknown = codes + "signature.hash|qncrypto::throw_unknown_hash_algorithm"
                                            "()|Unknown hash algorithm enum value: 6";
        support::check_failures(
            {{sign, code.empty() ? unknown : codes + code + private_context_of + "sign()"},
             {verify, code.empty() ? unknown : codes + code + public_context_of + "verify()"}});
    }
}

TEST_F(Operations, ADigestTooLongForTheKeyPassesWithoutARecord) {
    const KeyPair& small = key_pair(512);
    const auto signer = small.private_context();
    const Bytes digest = some_bytes(64);
    ErrorInfoPtr slot;
    Key signature(3);
    EXPECT_EQ(
        signer.sign(digest.data(), &signature, HashAlgorithm::sha512, RsaPadding::pkcs1, &slot), 0);
    EXPECT_TRUE(signature.empty());
    // PSS goes on with what is in the buffer.
    EXPECT_EQ(signer.sign(digest.data(), &signature, HashAlgorithm::sha512, RsaPadding::pss, &slot),
              64);
    EXPECT_FALSE(slot);
    EXPECT_FALSE(small.public_context().verify(signature.data(), 64, digest.data(),
                                               HashAlgorithm::sha512, RsaPadding::pss, &slot));
    EXPECT_FALSE(slot);
}

TEST_F(Operations, AnswersOfOpensslBelowZeroAreFailures) {
    const Bytes bytes = some_bytes(128);
    Bytes out(128);
    const FailingOpenssl failing;
    const auto signer = pair.private_context();
    const auto verifier = pair.public_context();
    const auto verify = [&](RsaPadding padding, bool answer) {
        return [&, padding, answer](ErrorInfoPtr* slot) {
            EXPECT_EQ(verifier.verify(bytes.data(), 128, bytes.data(), HashAlgorithm::sha256,
                                      padding, slot),
                      answer);
        };
    };
    ErrorInfoPtr slot;
    support::check_failures({
        {[&] {
             signer.sign(bytes.data(), out.data(), 128, HashAlgorithm::sha256, RsaPadding::pss,
                         &slot);
         },
         codes + "encryption" + private_context_of + "sign()", openssl},
        {verify(RsaPadding::pss, false), codes + "decryption" + public_context_of + "verify()",
         openssl},
        // Required: PKCS#1 fills the slot and still answers true.
        {verify(RsaPadding::pkcs1, true),
         codes + "signature.verify" + public_context_of + "verify()", openssl},
    });
}

TEST_F(Operations, NoFailedAllocationOfOpensslGivesAWrongAnswer) {
    const Bytes digest = some_bytes(32);
    const Key password(digest.data(), 8);
    const Key& key = pair.private_key;
    const std::string pem = RsaContext::public_key_as_pem(pair.public_key);
    const std::string pkcs8 = RsaContext::private_key_as_pkcs8_pem(key, password, "aes-128-cbc");
    const Key signature = signature_of(digest);
    Key cipher;
    Key out;
    private_context.encrypt(digest.data(), 32, &cipher, RsaPadding::pkcs1);
    using Context = RsaContext;
    const std::function<bool()> actions[] = {
        [&] { return Context::public_key_from_private_key(key) == pair.public_key; },
        [&] {
            return Context::public_key_from_pem(pem.data(), pem.size(), nullptr) == pair.public_key;
        },
        [&] {
            return Context::private_key_from_pkcs8_pem(pkcs8.data(), pkcs8.size(), password,
                                                       nullptr) == key;
        },
        [&] { return !Context::private_key_as_pkcs8_pem(key, password, "aria256").empty(); },
        [&] {
            pair.private_context().encrypt(digest.data(), 32, &out, RsaPadding::pkcs1);
            return out == cipher;
        },
        [&] {
            pair.public_context().decrypt(cipher.data(), 128, &out, RsaPadding::pkcs1, nullptr);
            return bytes_of(out) == digest;
        },
        [&] { // a failed signature is empty
            const Key made = signature_of(digest);
            return made.empty() || made == signature;
        },
        [&] { // what does not match never does
            return !pair.public_context().verify(cipher.data(), 128, digest.data(),
                                                 HashAlgorithm::sha256, RsaPadding::pss, nullptr);
        },
    };
    for (const auto& action : actions) {
        bool failed = true;
        for (int number = 1; failed; number += 1 + number / 20) {
            failed = with_failing_openssl_allocation(number, [&] {
                support::error_of([&] { EXPECT_TRUE(action()) << "allocation " << number; });
            });
            ERR_clear_error();
        }
    }
}

TEST_F(Operations, OneContextServesSeveralThreads) {
    const Bytes data = some_bytes(20);
    const auto use = [&] {
        for (int turn = 0; turn < 20; ++turn) {
            Key cipher;
            Key plain;
            private_context.encrypt(data.data(), data.size(), &cipher, RsaPadding::pkcs1);
            public_context.decrypt(cipher.data(), modulus, &plain, RsaPadding::pkcs1, nullptr);
            EXPECT_EQ(bytes_of(plain), data);
        }
    };
    std::thread other(use);
    use();
    other.join();
}

} // namespace
} // namespace qncrypto
