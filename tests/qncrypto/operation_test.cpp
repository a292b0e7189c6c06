// Encryption, signatures and the errors of both.
#include <algorithm>
#include <functional>

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsaerr.h>

#include "qncrypto/errors.h"
#include "qncrypto/openssl_error.h"
#include "qncrypto/rsa_validation.h"
#include "tests/qncrypto/bare_openssl.h"
#include "tests/support/failure.h"

namespace qncrypto {
namespace {

using namespace test;
using qncore::ErrorInfoPtr;
using enum RsaPadding;
using enum HashAlgorithm;

const std::string codes = "error.qncrypto.rsa.";
const std::string private_context_of = "|qncrypto::RsaPrivateContext::";
const std::string public_context_of = "|qncrypto::RsaPublicContext::";
constexpr auto unknown_padding = static_cast<RsaPadding>(4);
const std::string unknown_padding_report =
    codes +
    "padding.unknown|qncrypto::throw_unknown_rsa_padding()|Unknown RSA padding enum value: 4";
const std::string large_padding_text =
    "Specified padding mode too large for modulus of RSA key.  ModulusSize: 40, Padding: 2 (Size: "
    "42)";

/// A modulus of 40 bytes is below the overhead of OAEP.
RsaPublicContext tiny_context() {
    Bytes der{0x30, 46, 0x02, 41, 0x00};
    der.insert(der.end(), 40, 0xFF);
    der.insert(der.end(), {0x02, 1, 3});
    return {der.data(), der.size()};
}

class Operations : public testing::Test {
  protected:
    Operations() { ERR_clear_error(); }

    const KeyPair& pair = key_pair();
    const RsaPrivateContext private_context = pair.private_context();
    const RsaPublicContext public_context = pair.public_context();
    const std::size_t modulus = private_context.modulus_size();
};

TEST_F(Operations, BlocksAreThoseOfOpenssl) {
    const Rsa rsa = pair.rsa();
    Bytes foreign(modulus);
    const std::tuple<RsaPadding, int, int, std::size_t> cases[] = {
        {pkcs1, RSA_PKCS1_PADDING, 117, 11},
        {none, RSA_NO_PADDING, 128, 0},
        {oaep, RSA_PKCS1_OAEP_PADDING, 86, 42}};
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
        if (padding != oaep) {
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
    for (const RsaPadding padding : {oaep, unknown_padding}) {
        EXPECT_EQ(private_context.encrypt(nullptr, 9999, nullptr, 0, padding), 128);
        EXPECT_EQ(private_context.encrypt(nullptr, 9999, nullptr, padding), 128);
        EXPECT_EQ(public_context.encrypt(nullptr, 9999, nullptr, 0, padding), 128);
        EXPECT_EQ(public_context.encrypt(nullptr, 9999, nullptr, padding), 128);
        EXPECT_EQ(private_context.sign(nullptr, nullptr, 0, {}, padding, nullptr), 128);
    }
}

TEST_F(Operations, EncryptionIsRefused) {
    const RsaPublicContext tiny = tiny_context();
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
        {validate(public_context, pss, 999, 0), codes + "padding.unsupported" + by},
        {validate(public_context, unknown_padding, 999, 0), unknown_padding_report},
        {validate(tiny, oaep, 999, 0), codes + "padding.size" + by + "|" + large_padding_text},
        {validate(public_context, none, 999, 127),
         codes + "cipherDataSize" + by +
             "|Cipher buffer size too small for RSA key.  BufferSize: 127, ModulusSize: 128"},
        // Required: a placeholder that no parameter answers, and a parenthesis that none opens.
        {validate(public_context, pkcs1, 118, 129),
         codes + "plainDataSize" + by +
             "|Plaintext data size too big for RSA key and padding.  DataSize: 118, MaxDataSize: "
             "{@maxData})"},
        // Required: the text speaks of PKCS#1 too, which stays allowed.
        {encrypt(private_context, oaep, 999),
         codes + "padding.unsupported" + private_context_of +
             "encrypt()|Padding with PKCS#1 and OAEP only supported for encryption with public "
             "key"},
        {encrypt(private_context, pss, 10), codes + "padding.unsupported" + by},
        // Too short without padding: OpenSSL's own refusal.
        {encrypt(private_context, none, 10),
         codes + "encryption" + private_context_of + "encrypt()", openssl},
        {encrypt(public_context, none, 10), codes + "encryption" + public_context_of + "encrypt()",
         openssl},
    });
    EXPECT_TRUE(out.empty());
    EXPECT_EQ(tiny.max_data_size(oaep), 0U);
}

TEST_F(Operations, DecryptionChecksGoOnWithASlotAndTheLastFailureStays) {
    const RsaPublicContext tiny = tiny_context();
    const std::string by = "|qncrypto::validate_rsa_decrypt_params()";
    const std::string wrong_cipher = codes + "cipherDataSize" + by +
                                     "|Invalid cipher data size for RSA key (must be modulus "
                                     "size).  DataSize: 129, ModulusSize: 128";
    const std::string short_buffer =
        codes + "plainDataSize" + by +
        "|Insufficient plaintext buffer size for RSA key and padding.  BufferSize: 116, "
        "MaxDataSize: 117";
    const std::string large_padding = codes + "padding.size" + by + "|" + large_padding_text;
    ErrorInfoPtr slot;
    const auto check = [&](const RsaContext& context, RsaPadding padding, std::size_t cipher,
                           std::size_t room, const std::string& thrown, const std::string& left) {
        validate_rsa_decrypt_params(context, padding, cipher, room, &slot);
        support::check_failure(slot, {[] {}, left});
        support::check_failures(
            {{[&] { validate_rsa_decrypt_params(context, padding, cipher, room, nullptr); },
              thrown}});
    };
    check(public_context, pkcs1, 128, 116, short_buffer, short_buffer);
    check(public_context, pkcs1, 129, 116, wrong_cipher, short_buffer);
    check(public_context, unknown_padding, 129, 128, unknown_padding_report, wrong_cipher);
    check(tiny, oaep, 40, 0, large_padding, large_padding);
    slot = {};
    validate_rsa_decrypt_params(public_context, pkcs1, 128, 117, &slot);
    EXPECT_EQ(RsaContext::padding_size(pss, &slot), 0U);
    // Required: thrown although there is a slot.
    support::check_failures(
        {{[&] { validate_rsa_decrypt_params(public_context, pss, 0, 0, &slot); },
          codes + "padding.unsupported" + by}});
    EXPECT_FALSE(slot);
    EXPECT_EQ(RsaContext::padding_size(unknown_padding, &slot), 0U);
    Bytes block = some_bytes(modulus);
    EXPECT_LT(public_context.decrypt(block.data(), modulus, block.data(), modulus, unknown_padding,
                                     &slot),
              0);
    support::check_failure(
        slot, {[] {}, codes + "decryption" + public_context_of + "decrypt()", openssl});
    // Required: a block of a wrong size is decrypted nevertheless.
    block[0] = 0;
    Bytes whole(modulus);
    Bytes cut(modulus);
    public_context.decrypt(block.data(), 128, whole.data(), 128, none, nullptr);
    public_context.decrypt(block.data() + 1, 127, cut.data(), 128, none, &slot);
    EXPECT_EQ(cut, whole);
    support::check_failure(slot, {[] {}, codes + "cipherDataSize" + by});
}

TEST_F(Operations, AFailedDecryptionWithASlotAssignsItsNegativeCount) {
    const Bytes garbage(modulus, 1);
    Key out(some_bytes(3).data(), 3);
    ErrorInfoPtr slot;
    EXPECT_THROW(private_context.decrypt(garbage.data(), modulus, &out, oaep, &slot),
                 std::bad_alloc);
    support::check_failure(
        slot, {[] {}, codes + "decryption" + private_context_of + "decrypt()", openssl});
    EXPECT_EQ(bytes_of(out), some_bytes(3));
}

TEST_F(Operations, SignaturesAreThoseOfOpenssl) {
    const KeyPair& large = key_pair(1536);
    const Rsa rsa = large.rsa();
    const auto signer = large.private_context();
    const auto verifier = large.public_context();
    const std::pair<HashAlgorithm, const EVP_MD*> cases[] = {
        {md5, EVP_md5()},       {sha1, EVP_sha1()},     {sha224, EVP_sha224()},
        {sha256, EVP_sha256()}, {sha384, EVP_sha384()}, {sha512, EVP_sha512()}};
    for (const auto& [hash, md] : cases) {
        const auto size = static_cast<unsigned int>(EVP_MD_size(md));
        SCOPED_TRACE(size);
        const Bytes digest = some_bytes(size);
        const Bytes other(size, 7);
        Bytes block(192);
        Bytes foreign(192);
        Key signature;
        unsigned int length = 0;
        const auto expect_verified_alone = [&, hash = hash](RsaPadding padding) {
            ErrorInfoPtr slot;
            const unsigned char* const bytes = foreign.data();
            EXPECT_TRUE(verifier.verify(bytes, 192, digest.data(), hash, padding, &slot));
            EXPECT_FALSE(verifier.verify(bytes, 192, other.data(), hash, padding, &slot));
            EXPECT_FALSE(slot);
            EXPECT_EQ(ERR_peek_error(), 0U);
        };
        RSA_sign(EVP_MD_type(md), digest.data(), size, foreign.data(), &length, rsa.get());
        EXPECT_EQ(signer.sign(digest.data(), &signature, hash, pkcs1, nullptr), 192);
        EXPECT_EQ(bytes_of(signature), foreign);
        expect_verified_alone(pkcs1);

        // A salt of the digest's size; ours is the longest.
        RSA_padding_add_PKCS1_PSS(rsa.get(), block.data(), digest.data(), md,
                                  RSA_PSS_SALTLEN_DIGEST);
        RSA_private_encrypt(192, block.data(), foreign.data(), rsa.get(), RSA_NO_PADDING);
        expect_verified_alone(pss);
        EXPECT_EQ(signer.sign(digest.data(), &signature, hash, pss, nullptr), 192);
        RSA_public_decrypt(192, signature.data(), block.data(), rsa.get(), RSA_NO_PADDING);
        EXPECT_EQ(
            RSA_verify_PKCS1_PSS(rsa.get(), digest.data(), md, block.data(), RSA_PSS_SALTLEN_MAX),
            1);
    }
}

TEST_F(Operations, SigningAndVerifyingAreRefused) {
    const Bytes digest = some_bytes(32);
    Bytes bytes(129);
    const auto check = [&](std::size_t size, HashAlgorithm hash, RsaPadding padding,
                           const std::string& code, const std::string& thrower = "") {
        const auto sign = [&](ErrorInfoPtr* slot) {
            EXPECT_EQ(private_context.sign(digest.data(), bytes.data(), size, hash, padding, slot),
                      0);
        };
        const auto verify = [&](ErrorInfoPtr* slot) {
            EXPECT_FALSE(
                public_context.verify(bytes.data(), size, digest.data(), hash, padding, slot));
        };
        support::check_failures(
            {{sign, codes + code + (thrower.empty() ? private_context_of + "sign()" : thrower)},
             {verify,
              codes + code + (thrower.empty() ? public_context_of + "verify()" : thrower)}});
    };
    check(127, sha256, pkcs1, "cipherDataSize");
    check(129, sha256, pkcs1, "cipherDataSize");
    check(128, sha256, none, "signature.padding");
    check(128, sha256, unknown_padding, "signature.padding");
    check(128, static_cast<HashAlgorithm>(6), none, "signature.hash",
          "|qncrypto::throw_unknown_hash_algorithm()|Unknown hash algorithm enum value: 6");
}

TEST_F(Operations, ADigestTooLongForTheKeyPassesWithoutARecord) {
    const auto signer = key_pair(512).private_context();
    const Bytes digest = some_bytes(64);
    ErrorInfoPtr slot;
    Key signature(3);
    EXPECT_EQ(signer.sign(digest.data(), &signature, sha512, pkcs1, &slot), 0);
    EXPECT_TRUE(signature.empty());
    // PSS goes on with what is in the buffer.
    EXPECT_EQ(signer.sign(digest.data(), &signature, sha512, pss, &slot), 64);
    EXPECT_FALSE(slot);
}

TEST_F(Operations, AnswersOfOpensslBelowZeroAreFailures) {
    const Bytes bytes = some_bytes(128);
    Bytes out(128);
    const auto before = fail_operations();
    const auto signer = pair.private_context();
    const auto verifier = pair.public_context();
    const auto verify = [&](RsaPadding padding, bool answer) {
        return [&, padding, answer](ErrorInfoPtr* slot) {
            const unsigned char* const data = bytes.data();
            EXPECT_EQ(verifier.verify(data, 128, data, sha256, padding, slot), answer);
        };
    };
    ErrorInfoPtr slot;
    support::check_failures({
        {[&] { signer.sign(bytes.data(), out.data(), 128, sha256, pss, &slot); },
         codes + "encryption" + private_context_of + "sign()", openssl},
        {verify(pss, false), codes + "decryption" + public_context_of + "verify()", openssl},
        // Required: PKCS#1 fills the slot and still answers true.
        {verify(pkcs1, true), codes + "signature.verify" + public_context_of + "verify()", openssl},
    });
}

TEST_F(Operations, NoFailedAllocationOfOpensslGivesAWrongAnswer) {
    const Bytes digest = some_bytes(32);
    const Key password(digest.data(), 8);
    const Key& key = pair.private_key;
    const std::string pem = RsaContext::public_key_as_pem(pair.public_key);
    const std::string pkcs8 = RsaContext::private_key_as_pkcs8_pem(key, password, "aes-128-cbc");
    Key cipher;
    Key out;
    private_context.encrypt(digest.data(), 32, &cipher, pkcs1);
    using Context = RsaContext;
    const std::function<Key()> actions[] = {
        [&] {
            Key public_key;
            Context::create_key_pair(512, out, public_key);
            return Key(Context::public_key_from_private_key(out) == public_key);
        },
        [&] { return Context::public_key_from_pem(pem.data(), pem.size(), nullptr); },
        [&] {
            return Context::private_key_from_pkcs8_pem(pkcs8.data(), pkcs8.size(), password,
                                                       nullptr);
        },
        [&] { return Key(Context::private_key_as_pkcs8_pem(key, password, "aria256").size()); },
        [&] {
            pair.private_context().encrypt(digest.data(), 32, &out, pkcs1);
            return out;
        },
        [&] {
            pair.public_context().decrypt(cipher.data(), 128, &out, pkcs1, nullptr);
            return out;
        },
        [&] { // what does not match never does
            const auto verifier = pair.public_context();
            return Key(verifier.verify(cipher.data(), 128, digest.data(), sha256, pss, nullptr));
        },
    };
    for (const auto& action : actions) {
        const Key right = action();
        bool failed = true;
        for (int number = 1; failed; number += 1 + number / 20) {
            failed = with_failing_openssl_allocation(number, [&] {
                support::error_of(
                    [&] { EXPECT_TRUE(action() == right) << "allocation " << number; });
            });
            ERR_clear_error();
        }
    }
}

void put(const char* function, const char* file, int line, int library, int reason) {
    ERR_new();
    ERR_set_debug(file, line, function);
    ERR_set_error(library, reason, nullptr);
}

TEST(OpensslErrors, ARecordHasOpensslsTextAndLocation) {
    ERR_clear_error();
    put("key_lost", "crypto/lost.c", 77, ERR_LIB_RSA, RSA_R_KEY_SIZE_TOO_SMALL);
    put(nullptr, nullptr, 0, 100, 4321); // OpenSSL knows nothing about this one
    const auto known = openssl_error_info(32);
    ASSERT_TRUE(known && known->nested());
    EXPECT_EQ(known->code(), error::qncrypto_openssl);
    EXPECT_EQ(known->text(), "OpenSSL error!  Reason: \"key size too small\", Library: rsa "
                             "routines, Code: 2000078");
    EXPECT_EQ(known->location().function.view(), "key_lost");
    EXPECT_EQ(known->location().file.view(), "crypto/lost.c");
    EXPECT_EQ(known->location().line, 77U);
    const auto& unknown = *known->nested();
    EXPECT_EQ(unknown.location().function.view(), "#Unknown#");
    EXPECT_EQ(unknown.location().file.view(), "#unknown#");
    EXPECT_EQ(unknown.text(), "OpenSSL error!  Reason: \"error:320010E1:lib(100)::reason(4321)\", "
                              "Library: #unknown#, Code: 320010e1");
    EXPECT_FALSE(openssl_error_info(32)); // the queue is empty now
}

TEST(OpensslErrors, TheOldestEntryIsOutermostAndTheDepthIsALimit) {
    ERR_clear_error();
    for (int line = 1; line <= 4; ++line) {
        const int reason = line == 4 ? ERR_R_MALLOC_FAILURE : RSA_R_KEY_SIZE_TOO_SMALL;
        put("f", "f.c", line, ERR_LIB_RSA, reason);
    }
    EXPECT_FALSE(openssl_error_info(-1) || openssl_error_info(0));
    const auto outer = openssl_error_info(2);
    ASSERT_TRUE(outer && outer->nested());
    EXPECT_EQ(outer->location().line, 1U);
    EXPECT_FALSE(outer->nested()->nested());
    EXPECT_FALSE(is_openssl_fault(outer));
    const auto rest = openssl_error_info(32); // those beyond the depth are still there
    ASSERT_TRUE(rest);
    EXPECT_EQ(rest->location().line, 3U);
    EXPECT_TRUE(is_openssl_fault(rest));
}

} // namespace
} // namespace qncrypto
