// The key files of a machine, and the text form of enciphered passwords.
#include <cerrno>
#include <filesystem>

#include <gmock/gmock.h>
#include <openssl/err.h>

#include "platform/key_file.h"
#include "platform/testing/testing.h"
#include "qncertificates/certificate_keys.h"
#include "qncertificates/der_pem.h"
#include "qncrypto/rsa.h"
#include "tests/qncertificates/quick_keys.h"
#include "tests/support/failure.h"
#include "tests/support/temporary_directory.h"

namespace qncertificates {
namespace {

namespace fs = std::filesystem;
using Keys = qncore::RefCountPtr<CertificateKeys>;
using support::write_file;
using testing::HasSubstr;

std::string text_of(const qncrypto::Key& key) {
    return {reinterpret_cast<const char*>(key.data()), key.size()};
}

/// Private and public key.
using Pair = std::pair<std::string, std::string>;

Pair make_pair() {
    support::make_keys_quickly();
    qncrypto::Key private_key;
    qncrypto::Key public_key;
    qncrypto::RsaContext::create_key_pair(2048, private_key, public_key);
    return {text_of(private_key), text_of(public_key)};
}

class CertificateKeysTest : public testing::Test {
  protected:
    CertificateKeysTest() { write(pair); }

    Keys open(bool regenerate, EFormat format = eFormatPkcs1Der) const {
        return Keys(new CertificateKeys(public_file, private_file, format, regenerate));
    }

    void write(const Pair& keys) const {
        write_file(private_file, keys.first);
        write_file(public_file, keys.second);
    }

    static Pair keys_of(const Keys& keys) {
        return {text_of(keys->get_private_key()), text_of(keys->get_public_key())};
    }

    Pair contents() const {
        return {support::read_file(private_file), support::read_file(public_file)};
    }

    const Pair pair = make_pair();
    const support::TemporaryDirectory directory;
    const std::string public_file = directory.file("PublicKey.bin");
    const std::string private_file = directory.file("PrivateKey.bin");
};

TEST_F(CertificateKeysTest, WithoutBothFilesThereAreNoKeysUntilTheyAreMade) {
    for (const bool both : {true, false}) {
        fs::remove(public_file);
        if (both) {
            fs::remove(private_file);
        }
        const Keys keys = open(false);
        EXPECT_EQ(keys_of(keys), Pair());
        platform::testing::fail_next(platform::Call::write, {}); // a short write goes on
        ERR_raise(ERR_LIB_RSA, ERR_R_MALLOC_FAILURE);            // of another call of this thread
        keys->set_keys(eFormatPkcs1Der);
        EXPECT_EQ(contents(), keys_of(keys));
        EXPECT_EQ(keys_of(open(false)), keys_of(keys));
        const qncrypto::Key key = keys->get_public_key();
        EXPECT_EQ(qncrypto::RsaPublicContext(key.data(), key.size()).keylength(), 2048U);
        EXPECT_FALSE(*platform::is_open_to_others(private_file));
    }
}

TEST_F(CertificateKeysTest, OnlyFilesThatHoldNoPairAreReplaced) {
    const auto& [private_key, public_key] = pair;
    const Pair other = make_pair();
    const std::pair<Pair, std::string> cases[] = {
        {{"", public_key}, private_file + "\" does not hold a private key"},
        {{std::string(65536, 'x'), public_key}, private_file + "\" does not hold a private key"},
        {{private_key, other.second}, public_file + "\" does not hold the public key"},
        {{private_key, public_key + '\n'}, public_file + "\" does not hold the public key"},
        {{std::string(200000, 'x'), public_key}, private_file + "\" is too large"},
    };
    for (const auto& [keys, message] : cases) {
        write(keys);
        EXPECT_THAT(support::failure_of([&] { open(false); }),
                    testing::AllOf(HasSubstr("error.qncertificates.parameter.invalid"),
                                   HasSubstr(message)));
    }
    const Keys keys = open(true);
    keys->set_keys(eFormatPkcs1Der); // over a longer file
    EXPECT_EQ(keys_of(open(false)), keys_of(keys));
    EXPECT_THAT(support::failure_of([&] { open(true)->set_keys(eFormatPkcs1Der); }),
                HasSubstr("hold a usable pair"));
    EXPECT_EQ(contents(), keys_of(keys));
    for (const std::uint32_t number : {1U, 3U}) {
        const auto format = static_cast<EFormat>(number);
        const std::string expected = "Unknown format of key files: " + std::to_string(number);
        EXPECT_THAT(support::failure_of([&] { open(true, format); }), HasSubstr(expected));
        EXPECT_THAT(support::failure_of([&] { keys->set_keys(format); }), HasSubstr(expected));
    }
}

TEST_F(CertificateKeysTest, AFailureNamesTheFileAndKeepsTheObjectAsItWas) {
    const Keys keys = open(false);
    const std::string opening =
        "Unable to open key file \"" + private_file + "\" for reading and writing";
    const std::string reading = "Reading key file \"" + private_file + "\" failed";
    const std::string writing = "Writing to key file \"" + private_file + "\" failed";
    const std::string looking = "Unable to look for key file \"" + private_file + '"';
    const std::pair<platform::Call, std::string> cases[] = {
        {platform::Call::existence, looking}, {platform::Call::open, opening},
        {platform::Call::read, reading},      {platform::Call::seek, writing},
        {platform::Call::write, writing},     {platform::Call::set_end, writing},
        {platform::Call::flush, writing},
    };
    for (const auto& [call, message] : cases) {
        write({"no pair", "at all"});
        platform::testing::fail_next(call, platform::SystemError::posix(ENOSPC));
        const auto info = support::error_of([&] { keys->set_keys(eFormatPkcs1Der); });
        ASSERT_TRUE(info && info->nested()) << message;
        EXPECT_EQ(info->text(), message);
        EXPECT_EQ(keys_of(keys), pair);
        fs::remove(public_file);
        fs::remove(private_file);
        platform::testing::fail_next(call, platform::SystemError::posix(ENOSPC));
        EXPECT_THROW(keys->set_keys(eFormatPkcs1Der), qncore::ErrorException);
        EXPECT_TRUE(fs::is_empty(directory.path())) << "half a pair was left: " << message;
    }
}

using Bytes = std::vector<unsigned char>;

std::string pem_of(const Bytes& bytes) {
    Bytes pem{'x'};
    convert_DER_to_PEM(bytes, pem);
    return {pem.begin(), pem.end()};
}

Bytes bytes_of(const std::string& pem) {
    Bytes bytes{'x'};
    convert_PEM_to_DER(Bytes(pem.begin(), pem.end()), bytes);
    return bytes;
}

std::string block(const std::string& content, const std::string& label = "ENCIPHERED PASSWORD") {
    return "-----BEGIN " + label + "-----\n" + content + "-----END " + label + "-----\n";
}

TEST(DerPem, EveryLengthComesBackByteForByte) {
    Bytes bytes;
    for (std::size_t size = 0; size <= 600; ++size) {
        const std::string pem = pem_of(bytes);
        EXPECT_EQ(bytes_of(pem), bytes) << size;
        EXPECT_EQ(pem.find_first_of("<&>]\r"), std::string::npos) << size;
        bytes.push_back(static_cast<unsigned char>(size * size));
    }
    EXPECT_EQ(pem_of({}), block(""));
    EXPECT_EQ(pem_of(Bytes(50, 0)), block(std::string(64, 'A') + "\nAAA=\n"));
}

TEST(DerPem, LineEndsAndTextAroundTheBlockDoNotMatter) {
    const std::string head = "-----BEGIN ENCIPHERED PASSWORD-----";
    const std::string tail = "-----END ENCIPHERED PASSWORD-----";
    for (const std::string& text :
         {head + "\r\nAQID\r\n" + tail + "\r\n", "\n of srv01\n" + head + "\nAQID\n" + tail}) {
        EXPECT_EQ(bytes_of(text), (Bytes{1, 2, 3})) << text;
    }
}

TEST(DerPem, OtherTextIsRefused) {
    const std::string good = pem_of(Bytes(256, 7));
    const std::pair<std::string, bool> cases[] = {
        // True for what OpenSSL refuses.
        {"", true},
        {good.substr(1), true},
        {good.substr(0, 100), true},
        {block("A*ID\n"), true},
        {block("AQID\n", "CERTIFICATE"), false},
        {block("Proc-Type: 4,CLEAR\n\nAQID\n"), false},
    };
    for (const auto& [text, from_openssl] : cases) {
        Bytes out{7};
        const auto convert = [&text = text, &out] {
            convert_PEM_to_DER(Bytes(text.begin(), text.end()), out);
        };
        support::check_failures(
            {{convert,
              "error.qncertificates.parameter.invalid|qncertificates::convert_PEM_to_DER()",
              from_openssl ? "error.qncrypto.openssl" : ""}});
        EXPECT_EQ(out, Bytes{7}) << text;
    }
}

} // namespace
} // namespace qncertificates
