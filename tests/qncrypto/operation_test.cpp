#include <new>

#include <gtest/gtest.h>
#include <openssl/err.h>

#include "qncore/error_info.h"
#include "qncrypto/rsa_validation.h"
#include "tests/qncrypto/bare_openssl.h"

namespace qncrypto {
namespace {

using namespace test;
using qncore::ErrorInfoPtr;

constexpr const char* private_encrypt = "qncrypto::RsaPrivateContext::encrypt()";
constexpr const char* public_decrypt = "qncrypto::RsaPublicContext::decrypt()";
constexpr const char* encrypt_validator = "qncrypto::validate_rsa_encrypt_params()";
constexpr const char* decrypt_validator = "qncrypto::validate_rsa_decrypt_params()";
constexpr const char* sign_text = "qncrypto::RsaPrivateContext::sign()";
constexpr const char* verify_text = "qncrypto::RsaPublicContext::verify()";
constexpr const char* decryption_failed =
    "RSA decryption failed (key or padding mismatch or corrupt ciphertext)";
constexpr auto unknown_padding = static_cast<RsaPadding>(4);
constexpr auto unknown_hash = static_cast<HashAlgorithm>(6);
constexpr HashAlgorithm all_hashes[] = {HashAlgorithm::md5,    HashAlgorithm::sha1,
                                        HashAlgorithm::sha224, HashAlgorithm::sha256,
                                        HashAlgorithm::sha384, HashAlgorithm::sha512};

class Operations : public testing::Test {
  protected:
    Operations() { ERR_clear_error(); }

    const KeyPair& pair = key_pair();
    const RsaPrivateContext private_context = pair.private_context();
    const RsaPublicContext public_context = pair.public_context();
    const std::size_t modulus = private_context.modulus_size();
};

TEST_F(Operations, PrivateBlocksAreThoseOfOpenssl) {
    const Rsa rsa = pair.rsa();
    struct Case {
        RsaPadding padding;
        int openssl;
        std::size_t size;
    };
    const Case cases[] = {{RsaPadding::pkcs1, RSA_PKCS1_PADDING, 0},
                          {RsaPadding::pkcs1, RSA_PKCS1_PADDING, 1},
                          {RsaPadding::pkcs1, RSA_PKCS1_PADDING, 117},
                          {RsaPadding::none, RSA_NO_PADDING, 128}};
    for (const Case& test : cases) {
        const Bytes data = some_bytes(test.size);
        Bytes expected(modulus);
        RSA_private_encrypt(static_cast<int>(test.size), data.data(), expected.data(), rsa.get(),
                            test.openssl);
        Key cipher;
        EXPECT_EQ(private_context.encrypt(data.data(), test.size, &cipher, test.padding), 128);
        EXPECT_EQ(bytes_of(cipher), expected) << test.size;
        Key plain;
        EXPECT_EQ(public_context.decrypt(cipher.data(), 128, &plain, test.padding, nullptr),
                  static_cast<std::int64_t>(test.size));
        EXPECT_EQ(bytes_of(plain), data) << test.size;
    }
}

TEST_F(Operations, PublicBlocksAreReadByOpensslAndBack) {
    const Pkey pkey = pair.pkey();
    struct Case {
        RsaPadding padding;
        int openssl;
        std::size_t most;
    };
    const Case cases[] = {{RsaPadding::none, RSA_NO_PADDING, 128},
                          {RsaPadding::pkcs1, RSA_PKCS1_PADDING, 117},
                          {RsaPadding::oaep, RSA_PKCS1_OAEP_PADDING, 86}};
    for (const Case& test : cases) {
        SCOPED_TRACE(test.openssl);
        EXPECT_EQ(public_context.max_data_size(test.padding), test.most);
        EXPECT_EQ(RsaContext::padding_size(test.padding, nullptr), modulus - test.most);
        const Bytes data = some_bytes(test.most);
        Key cipher;
        EXPECT_EQ(public_context.encrypt(data.data(), data.size(), &cipher, test.padding), 128);

        EXPECT_EQ(by_openssl(evp_context(pkey, EVP_PKEY_decrypt_init, test.openssl),
                             EVP_PKEY_decrypt, bytes_of(cipher)),
                  data);
        const Bytes foreign = by_openssl(evp_context(pkey, EVP_PKEY_encrypt_init, test.openssl),
                                         EVP_PKEY_encrypt, data);
        Key ours;
        private_context.decrypt(foreign.data(), foreign.size(), &ours, test.padding, nullptr);
        EXPECT_EQ(bytes_of(ours), data);

        expect_error(thrown_by([&] {
                         public_context.encrypt(data.data(), data.size() + 1, &cipher,
                                                test.padding);
                     }),
                     error::qncrypto_rsa_plainDataSize,
                     "Plaintext data size too big for RSA key and padding.  DataSize: " +
                         std::to_string(test.most + 1) + ", MaxDataSize: {@maxData})",
                     encrypt_validator, false);
    }
}

TEST_F(Operations, WithoutAnOutputTheModulusSizeIsGivenAndNothingIsTested) {
    for (const RsaPadding padding : {RsaPadding::oaep, RsaPadding::pss, unknown_padding}) {
        EXPECT_EQ(private_context.encrypt(nullptr, 9999, nullptr, 0, padding), 128);
        EXPECT_EQ(private_context.encrypt(nullptr, 9999, nullptr, padding), 128);
        EXPECT_EQ(public_context.encrypt(nullptr, 9999, nullptr, 0, padding), 128);
        EXPECT_EQ(public_context.encrypt(nullptr, 9999, nullptr, padding), 128);
        EXPECT_EQ(private_context.sign(nullptr, nullptr, 0, unknown_hash, padding, nullptr), 128);
    }
}

TEST_F(Operations, EncryptionIsRefusedWithThoseWords) {
    const RsaPublicContext tiny(tiny_public_key().data(), tiny_public_key().size());
    struct Case {
        const RsaContext& context;
        RsaPadding padding;
        std::size_t data_size;
        std::size_t buffer_size;
        const qncore::ErrorCode& code;
        const char* text;
        const char* function;
    };
    const Case cases[] = {
        {public_context, RsaPadding::pss, 999, 0, error::qncrypto_rsa_padding_unsupported,
         "The PKCS#1 PSS padding is not valid for encryption.", encrypt_validator},
        {public_context, unknown_padding, 999, 0, error::qncrypto_rsa_padding_unknown,
         "Unknown RSA padding enum value: 4", "qncrypto::throw_unknown_rsa_padding()"},
        {tiny, RsaPadding::oaep, 999, 0, error::qncrypto_rsa_padding_size,
         "Specified padding mode too large for modulus of RSA key.  ModulusSize: 40, Padding: 2 "
         "(Size: 42)",
         encrypt_validator},
        {public_context, RsaPadding::none, 999, 127, error::qncrypto_rsa_cipherDataSize,
         "Cipher buffer size too small for RSA key.  BufferSize: 127, ModulusSize: 128",
         encrypt_validator},
        {public_context, RsaPadding::pkcs1, 118, 128, error::qncrypto_rsa_plainDataSize,
         "Plaintext data size too big for RSA key and padding.  DataSize: 118, MaxDataSize: "
         "{@maxData})",
         encrypt_validator},
    };
    for (const Case& test : cases) {
        const auto info = thrown_by([&] {
            validate_rsa_encrypt_params(test.context, test.padding, test.data_size,
                                        test.buffer_size);
        });
        expect_error(info, test.code, test.text, test.function, false);
        if (test.code == error::qncrypto_rsa_plainDataSize) {
            EXPECT_EQ(*info->params().find("maxDataSize"), "117");
        }
    }
    EXPECT_EQ(tiny.max_data_size(RsaPadding::oaep), 0U);
    EXPECT_EQ(tiny.max_data_size(RsaPadding::pkcs1), 29U);
    expect_error(thrown_by([&] { tiny.max_data_size(unknown_padding); }),
                 error::qncrypto_rsa_padding_unknown, "Unknown RSA padding enum value: 4",
                 "qncrypto::throw_unknown_rsa_padding()", false);
}

TEST_F(Operations, ThePrivateKeyRefusesOaepAlone) {
    const Bytes data = some_bytes(10);
    Key out;
    expect_error(
        thrown_by([&] { private_context.encrypt(data.data(), 999, &out, RsaPadding::oaep); }),
        error::qncrypto_rsa_padding_unsupported,
        "Padding with PKCS#1 and OAEP only supported for encryption with public key",
        private_encrypt, false);
    expect_error(
        thrown_by([&] { private_context.encrypt(data.data(), 10, &out, RsaPadding::pss); }),
        error::qncrypto_rsa_padding_unsupported,
        "The PKCS#1 PSS padding is not valid for encryption.", encrypt_validator, false);
    // Too short without padding: OpenSSL's own refusal.
    expect_error(
        thrown_by([&] { private_context.encrypt(data.data(), 10, &out, RsaPadding::none); }),
        error::qncrypto_rsa_encryption, "RSA encryption failed", private_encrypt, true);
    expect_error(
        thrown_by([&] { public_context.encrypt(data.data(), 10, &out, RsaPadding::none); }),
        error::qncrypto_rsa_encryption, "RSA encryption failed",
        "qncrypto::RsaPublicContext::encrypt()", true);
    EXPECT_TRUE(out.empty());
}

TEST_F(Operations, DecryptionTestsGoOnWithASlotAndTheLastFailureStays) {
    const RsaPublicContext tiny(tiny_public_key().data(), tiny_public_key().size());
    struct Case {
        const RsaContext& context;
        RsaPadding padding;
        std::size_t cipher_size;
        std::size_t buffer_size;
        const char* first; ///< thrown without a slot
        const char* last;  ///< left in the slot
    };
    const char* const wrong_cipher = "Invalid cipher data size for RSA key (must be modulus size). "
                                     " DataSize: 127, ModulusSize: 128";
    const char* const short_buffer = "Insufficient plaintext buffer size for RSA key and padding.  "
                                     "BufferSize: 116, MaxDataSize: 117";
    const char* const large_padding = "Specified padding mode too large for modulus of RSA key.  "
                                      "ModulusSize: 40, Padding: 2 (Size: 42)";
    const char* const unknown = "Unknown RSA padding enum value: 4";
    const Case cases[] = {
        {public_context, RsaPadding::pkcs1, 127, 117, wrong_cipher, wrong_cipher},
        {public_context, RsaPadding::pkcs1, 128, 116, short_buffer, short_buffer},
        {public_context, RsaPadding::pkcs1, 127, 116, wrong_cipher, short_buffer},
        {public_context, unknown_padding, 128, 128, unknown, unknown},
        {public_context, unknown_padding, 127, 128, unknown, wrong_cipher},
        {tiny, RsaPadding::oaep, 40, 0, large_padding, large_padding},
    };
    for (const Case& test : cases) {
        ErrorInfoPtr slot;
        validate_rsa_decrypt_params(test.context, test.padding, test.cipher_size, test.buffer_size,
                                    &slot);
        ASSERT_TRUE(slot) << test.last;
        EXPECT_EQ(slot->text(), test.last);
        const auto info = thrown_by([&] {
            validate_rsa_decrypt_params(test.context, test.padding, test.cipher_size,
                                        test.buffer_size, nullptr);
        });
        ASSERT_TRUE(info) << test.first;
        EXPECT_EQ(info->text(), test.first);
    }
    ErrorInfoPtr slot;
    validate_rsa_decrypt_params(public_context, RsaPadding::pkcs1, 128, 117, &slot);
    EXPECT_FALSE(slot);
    expect_error(thrown_by([&] {
                     validate_rsa_decrypt_params(public_context, RsaPadding::pss, 0, 0, &slot);
                 }),
                 error::qncrypto_rsa_padding_unsupported,
                 "The PKCS#1 PSS padding is not valid for decryption.", decrypt_validator, false);
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
    expect_error(slot, error::qncrypto_rsa_cipherDataSize,
                 "Invalid cipher data size for RSA key (must be modulus size).  DataSize: 127, "
                 "ModulusSize: 128",
                 decrypt_validator, false);
}

TEST_F(Operations, AFailedDecryptionWithASlotAssignsItsNegativeCount) {
    const Bytes garbage(modulus, 1);
    ErrorInfoPtr slot;
    Key out(some_bytes(3).data(), 3);
    EXPECT_LT(public_context.decrypt(garbage.data(), modulus, nullptr, RsaPadding::pkcs1, &slot),
              0);
    expect_error(slot, error::qncrypto_rsa_decryption, decryption_failed, public_decrypt, true);
    slot = {};
    EXPECT_THROW(private_context.decrypt(garbage.data(), modulus, &out, RsaPadding::oaep, &slot),
                 std::bad_alloc);
    expect_error(slot, error::qncrypto_rsa_decryption, decryption_failed,
                 "qncrypto::RsaPrivateContext::decrypt()", true);
    EXPECT_EQ(bytes_of(out), some_bytes(3));
    expect_error(thrown_by([&] {
                     public_context.decrypt(garbage.data(), modulus, &out, RsaPadding::pkcs1,
                                            nullptr);
                 }),
                 error::qncrypto_rsa_decryption, decryption_failed, public_decrypt, true);
}

TEST_F(Operations, SignaturesAreThoseOfOpenssl) {
    const KeyPair& large = key_pair(1536);
    const auto signer = large.private_context();
    const auto verifier = large.public_context();
    const Pkey pkey = large.pkey();
    const std::string text = "what is signed";
    for (const RsaPadding padding : {RsaPadding::pkcs1, RsaPadding::pss}) {
        const int openssl = padding == RsaPadding::pss ? RSA_PKCS1_PSS_PADDING : RSA_PKCS1_PADDING;
        for (const HashAlgorithm hash : all_hashes) {
            SCOPED_TRACE(static_cast<int>(hash) * 10 + openssl);
            const Bytes digest = digest_of(hash, text);
            Key signature;
            EXPECT_EQ(signer.sign(digest.data(), &signature, hash, padding, nullptr), 192);
            const EVP_MD* const md = evp_digest(hash);
            EXPECT_EQ(EVP_PKEY_verify(evp_context(pkey, EVP_PKEY_verify_init, openssl, md).get(),
                                      signature.data(), signature.size(), digest.data(),
                                      digest.size()),
                      1);
            const Bytes foreign = by_openssl(evp_context(pkey, EVP_PKEY_sign_init, openssl, md),
                                             EVP_PKEY_sign, digest);
            EXPECT_TRUE(
                verifier.verify(foreign.data(), 192, digest.data(), hash, padding, nullptr));

            ErrorInfoPtr slot;
            const Bytes other = digest_of(hash, "something else");
            EXPECT_FALSE(verifier.verify(foreign.data(), 192, other.data(), hash, padding, &slot));
            EXPECT_FALSE(slot);
            EXPECT_EQ(ERR_peek_error(), 0U);
        }
    }
}

TEST_F(Operations, SigningAndVerifyingAreRefusedWithThoseWords) {
    const Bytes digest = digest_of(HashAlgorithm::sha256, "x");
    struct Case {
        std::size_t size;
        HashAlgorithm hash;
        RsaPadding padding;
        const qncore::ErrorCode& code;
        const char* text;
        bool own_location;
    };
    const char* const only = "Only PKCS#1-v1.5 and PSS padding supported for signing";
    const Case cases[] = {
        {127, unknown_hash, RsaPadding::none, error::qncrypto_rsa_cipherDataSize,
         "Invalid signature data size for RSA key (must be modulus size).  DataSize: 127, "
         "ModulusSize: 128",
         true},
        {128, unknown_hash, RsaPadding::none, error::qncrypto_rsa_signature_hash,
         "Unknown hash algorithm enum value: 6", false},
        {128, HashAlgorithm::sha256, RsaPadding::none, error::qncrypto_rsa_signature_padding, only,
         true},
        {128, HashAlgorithm::sha256, RsaPadding::oaep, error::qncrypto_rsa_signature_padding, only,
         true},
        {128, HashAlgorithm::sha256, unknown_padding, error::qncrypto_rsa_signature_padding, only,
         true},
    };
    for (const Case& test : cases) {
        Bytes signature(test.size);
        const auto sign = [&](ErrorInfoPtr* slot) {
            return private_context.sign(digest.data(), signature.data(), test.size, test.hash,
                                        test.padding, slot);
        };
        const auto verify = [&](ErrorInfoPtr* slot) {
            return public_context.verify(signature.data(), test.size, digest.data(), test.hash,
                                         test.padding, slot);
        };
        const char* const other = "qncrypto::throw_unknown_hash_algorithm()";
        const char* const in_sign = test.own_location ? sign_text : other;
        const char* const in_verify = test.own_location ? verify_text : other;
        ErrorInfoPtr slot;
        EXPECT_EQ(sign(&slot), 0);
        expect_error(slot, test.code, test.text, in_sign, false);
        slot = {};
        EXPECT_FALSE(verify(&slot));
        expect_error(slot, test.code, test.text, in_verify, false);
        expect_error(thrown_by([&] { sign(nullptr); }), test.code, test.text, in_sign, false);
        expect_error(thrown_by([&] { verify(nullptr); }), test.code, test.text, in_verify, false);
    }
}

TEST_F(Operations, ADigestTooLongForTheKeyPassesWithoutARecord) {
    const KeyPair& small = key_pair(512);
    const auto signer = small.private_context();
    const Bytes digest = digest_of(HashAlgorithm::sha512, "x");
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
    const auto sign = [&](RsaPadding padding, ErrorInfoPtr* slot) {
        return signer.sign(bytes.data(), out.data(), 128, HashAlgorithm::sha256, padding, slot);
    };
    const auto verify = [&](RsaPadding padding, ErrorInfoPtr* slot) {
        return verifier.verify(bytes.data(), 128, bytes.data(), HashAlgorithm::sha256, padding,
                               slot);
    };
    ErrorInfoPtr slot;
    // OpenSSL 3 turns the method's -1 into a 0, which passes.
    EXPECT_EQ(sign(RsaPadding::pkcs1, &slot), 0);
    EXPECT_FALSE(slot);
    ERR_clear_error();
    expect_error(thrown_by([&] { sign(RsaPadding::pss, &slot); }), error::qncrypto_rsa_encryption,
                 "RSA encryption failed", sign_text, true);
    EXPECT_FALSE(verify(RsaPadding::pss, &slot));
    expect_error(slot, error::qncrypto_rsa_decryption, "RSA decryption of signature failed",
                 verify_text, true);
    // PKCS#1 fills the slot and still answers true.
    EXPECT_TRUE(verify(RsaPadding::pkcs1, &slot));
    expect_error(slot, error::qncrypto_rsa_signature_verify, "Verifying signature failed",
                 verify_text, true);
    expect_error(thrown_by([&] { verify(RsaPadding::pkcs1, nullptr); }),
                 error::qncrypto_rsa_signature_verify, "Verifying signature failed", verify_text,
                 true);
}

} // namespace
} // namespace qncrypto
