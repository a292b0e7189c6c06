#include <cerrno>
#include <filesystem>

#include <gmock/gmock.h>

#include "platform/key_file.h"
#include "platform/system_error.h"
#include "platform/testing/testing.h"
#include "qncertificates/certificate_keys.h"
#include "qncertificates/errors.h"
#include "qncrypto/rsa.h"
#include "tests/qncertificates/quick_keys.h"
#include "tests/support/failure.h"
#include "tests/support/temporary_directory.h"

namespace qncertificates {
namespace {

namespace fs = std::filesystem;
using Keys = qncore::RefCountPtr<CertificateKeys>;
using support::read_file;
using support::write_file;
using testing::HasSubstr;

std::string text_of(const qncrypto::Key& key) {
    return {reinterpret_cast<const char*>(key.data()), key.size()};
}

/// Two pairs, each made once a process.
struct Pair {
    qncrypto::Key private_key;
    qncrypto::Key public_key;
    Pair() { qncrypto::RsaContext::create_key_pair(2048, private_key, public_key); }
};

const Pair& pair(std::size_t number) {
    static const Pair pairs[2];
    return pairs[number];
}

class CertificateKeysTest : public testing::Test {
  protected:
    CertificateKeysTest() {
        support::make_keys_quickly();
        write(text_of(pair(0).private_key), text_of(pair(0).public_key));
    }

    Keys open(bool regenerate, EFormat format = eFormatPkcs1Der) const {
        return Keys(new CertificateKeys(public_file, private_file, format, regenerate));
    }

    void write(const std::string& private_key, const std::string& public_key) const {
        write_file(private_file, private_key);
        write_file(public_file, public_key);
    }

    /// What the two files hold; nothing for a file that is missing.
    std::string contents() const {
        std::string both;
        for (const std::string& file : {private_file, public_file}) {
            both += (fs::is_regular_file(file) ? read_file(file) : "none") + "|";
        }
        return both;
    }

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
        const std::string before = contents();
        const Keys keys = open(false);
        EXPECT_TRUE(keys->get_private_key().empty());
        EXPECT_TRUE(keys->get_public_key().empty());
        platform::testing::fail_next(platform::Call::write, {}); // a short write goes on
        keys->set_keys(eFormatPkcs1Der);
        EXPECT_NE(contents(), before);
        EXPECT_EQ(contents(),
                  text_of(keys->get_private_key()) + "|" + text_of(keys->get_public_key()) + "|");
        const qncrypto::Key public_key = keys->get_public_key();
        EXPECT_EQ(qncrypto::RsaPublicContext(public_key.data(), public_key.size()).keylength(),
                  2048U);
        EXPECT_TRUE(open(false)->get_private_key() == keys->get_private_key());
        EXPECT_TRUE(open(false)->get_public_key() == public_key);
        EXPECT_FALSE(*platform::is_open_to_others(public_file));
        EXPECT_FALSE(*platform::is_open_to_others(private_file));
    }
}

TEST_F(CertificateKeysTest, OnlyFilesThatHoldNoPairAreReplaced) {
    const std::string private_key = text_of(pair(0).private_key);
    const std::string public_key = text_of(pair(0).public_key);
    const struct {
        std::string private_key;
        std::string public_key;
        const char* message;
    } cases[] = {
        {"", public_key, "does not hold a private key"},
        {"garbage", public_key, "does not hold a private key"},
        {private_key.substr(0, 100), public_key, "does not hold a private key"},
        {public_key, public_key, "does not hold a private key"},
        {private_key, "", "does not hold the public key"},
        {private_key, text_of(pair(1).public_key), "does not hold the public key"},
        {text_of(pair(1).private_key), public_key, "does not hold the public key"},
        {private_key, public_key + '\n', "does not hold the public key"},
        {std::string(65537, 'x'), public_key, "is too large"},
    };
    for (const auto& test : cases) {
        write(test.private_key, test.public_key);
        const std::string text = support::failure_of([&] { open(false); });
        EXPECT_THAT(text, HasSubstr("error.qncertificates.parameter.invalid"));
        EXPECT_THAT(text, HasSubstr(test.message));
        EXPECT_THAT(text, HasSubstr(directory.str()));
    }
    const Keys keys = open(true);
    keys->set_keys(eFormatPkcs1Der); // over a longer file
    const std::string made = contents();
    EXPECT_TRUE(open(false)->get_private_key() == keys->get_private_key());
    for (const bool regenerate : {true, false}) {
        EXPECT_THAT(support::failure_of([&] { open(regenerate)->set_keys(eFormatPkcs1Der); }),
                    HasSubstr("hold a usable pair"));
        EXPECT_EQ(contents(), made);
    }
}

TEST_F(CertificateKeysTest, OtherFormatsAreUnknown) {
    for (const std::uint32_t number : {0U, 1U, 3U}) {
        const auto format = static_cast<EFormat>(number);
        const std::string expected = "Unknown format of key files: " + std::to_string(number);
        EXPECT_THAT(support::failure_of([&] { open(true, format); }), HasSubstr(expected));
        EXPECT_THAT(support::failure_of([&] { open(true)->set_keys(format); }),
                    HasSubstr(expected));
    }
}

TEST_F(CertificateKeysTest, AFailureNamesTheFileAndKeepsTheObjectAsItWas) {
    const Keys keys = open(false);
    const std::string reading = "Reading key file \"" + private_file + "\" failed";
    const std::string writing = "Writing to key file \"" + private_file + "\" failed";
    const std::pair<platform::Call, std::string> cases[] = {
        {platform::Call::read, reading},  {platform::Call::seek, writing},
        {platform::Call::write, writing}, {platform::Call::set_end, writing},
        {platform::Call::flush, writing},
    };
    for (const auto& [call, message] : cases) {
        write("no pair", "at all");
        platform::testing::fail_next(call, platform::SystemError::posix(ENOSPC));
        const auto info = support::error_of([&] { keys->set_keys(eFormatPkcs1Der); });
        ASSERT_TRUE(info) << message;
        EXPECT_EQ(info->text(), message);
        EXPECT_TRUE(info->nested());
        EXPECT_TRUE(keys->get_private_key() == pair(0).private_key);
        fs::remove(public_file);
        fs::remove(private_file);
        platform::testing::fail_next(call, platform::SystemError::posix(ENOSPC));
        EXPECT_TRUE(support::error_of([&] { keys->set_keys(eFormatPkcs1Der); }));
        EXPECT_TRUE(fs::is_empty(directory.path())) << "half a pair was left: " << message;
    }
}

TEST_F(CertificateKeysTest, APairThatCannotBeOpenedWholeIsNotTouched) {
    fs::remove(public_file);
    fs::create_directory(public_file);
    for (const bool private_lost : {false, true}) {
        if (private_lost) {
            fs::remove(private_file);
        }
        const std::string before = contents();
        const auto info = support::error_of([&] { open(true)->set_keys(eFormatPkcs1Der); });
        ASSERT_TRUE(info);
        EXPECT_EQ(info->text(),
                  "Unable to open key file \"" + public_file + "\" for reading and writing");
        EXPECT_TRUE(info->nested());
        EXPECT_EQ(contents(), before);
    }
}

} // namespace
} // namespace qncertificates
