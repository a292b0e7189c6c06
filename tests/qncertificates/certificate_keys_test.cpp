#include <cerrno>
#include <filesystem>

#include <gmock/gmock.h>
#include <openssl/err.h>

#include "platform/key_file.h"
#include "platform/testing/testing.h"
#include "qncertificates/certificate_keys.h"
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

} // namespace
} // namespace qncertificates
