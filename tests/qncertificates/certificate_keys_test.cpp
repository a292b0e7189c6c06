#include <cerrno>
#include <filesystem>

#include <gmock/gmock.h>

#include "platform/key_file.h"
#include "platform/system_error.h"
#include "platform/testing/testing.h"
#include "qncertificates/certificate_keys.h"
#include "qncertificates/errors.h"
#include "qncore/error_exception.h"
#include "qncrypto/rsa.h"
#include "tests/support/account.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_directory.h"

namespace qncertificates {
namespace {

namespace fs = std::filesystem;
using qncore::ErrorInfoPtr;
using Keys = qncore::RefCountPtr<CertificateKeys>;
using support::read_file;
using support::write_file;
using testing::HasSubstr;

std::string text_of(const qncrypto::Key& key) {
    return {reinterpret_cast<const char*>(key.data()), key.size()};
}

template <class Function>
ErrorInfoPtr thrown_by(const Function& function) {
    try {
        function();
    } catch (const qncore::ErrorException& exception) {
        return exception.info();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

class CertificateKeysTest : public testing::Test {
  protected:
    Keys open(bool regenerate, EFormat format = eFormatPkcs1Der) const {
        return Keys(new CertificateKeys(public_file, private_file, format, regenerate));
    }

    /// A pair in both files, as another process would have left it.
    void make_pair() const { open(true)->set_keys(eFormatPkcs1Der); }

    const support::TemporaryDirectory directory;
    const std::string public_file = directory.file("PublicKey.bin");
    const std::string private_file = directory.file("PrivateKey.bin");
};

TEST_F(CertificateKeysTest, WithoutFilesThereAreNoKeysUntilTheyAreMade) {
    const Keys keys = open(false);
    EXPECT_TRUE(keys->get_private_key().empty());
    EXPECT_TRUE(keys->get_public_key().empty());
    keys->set_keys(eFormatPkcs1Der);
    EXPECT_EQ(text_of(keys->get_private_key()), read_file(private_file));
    EXPECT_EQ(text_of(keys->get_public_key()), read_file(public_file));
    const qncrypto::Key public_key = keys->get_public_key();
    EXPECT_EQ(qncrypto::RsaPublicContext(public_key.data(), public_key.size()).keylength(), 2048U);

    const Keys again = open(false);
    EXPECT_TRUE(again->get_private_key() == keys->get_private_key());
    EXPECT_TRUE(again->get_public_key() == keys->get_public_key());
    EXPECT_FALSE(platform::is_open_to_others(private_file));
    EXPECT_FALSE(platform::is_open_to_others(public_file));
}

TEST_F(CertificateKeysTest, ALoneSurvivorIsNotLoadedAndGoesWithTheNewPair) {
    make_pair();
    for (const std::string& lost : {public_file, private_file}) {
        const std::string before = read_file(private_file);
        fs::remove(lost);
        const Keys keys = open(false);
        EXPECT_TRUE(keys->get_private_key().empty()) << lost;
        keys->set_keys(eFormatPkcs1Der);
        EXPECT_NE(read_file(private_file), before) << lost;
        EXPECT_TRUE(open(false)->get_public_key() == keys->get_public_key()) << lost;
    }
}

TEST_F(CertificateKeysTest, FilesThatHoldNoPairAreRefusedAndReplaced) {
    make_pair();
    const std::string other_private = read_file(private_file);
    const std::string other_public = read_file(public_file);
    make_pair();
    const std::string good_private = read_file(private_file);
    const std::string good_public = read_file(public_file);
    struct Case {
        std::string private_key;
        std::string public_key;
        const char* message;
    };
    const Case cases[] = {
        {"", good_public, "does not hold a private key"},
        {"garbage", good_public, "does not hold a private key"},
        {good_private.substr(0, 100), good_public, "does not hold a private key"},
        {good_public, good_public, "does not hold a private key"},
        {good_private, "", "does not hold the public key"},
        {good_private, "garbage", "does not hold the public key"},
        {good_private, other_public, "does not hold the public key"},
        {other_private, good_public, "does not hold the public key"},
        {good_private, good_public + '\n', "does not hold the public key"},
        {std::string(65537, 'x'), good_public, "is too large: 65537 bytes"},
    };
    for (const Case& test : cases) {
        write_file(private_file, test.private_key);
        write_file(public_file, test.public_key);
        const auto info = thrown_by([&] { open(false); });
        ASSERT_TRUE(info) << test.message;
        EXPECT_EQ(info->code(), error::qncertificates_parameter_invalid);
        EXPECT_THAT(info->text(), HasSubstr(test.message));
        EXPECT_THAT(info->text(), HasSubstr(directory.str()));
        const Keys keys = open(true);
        EXPECT_TRUE(keys->get_private_key().empty());
    }
    const Keys keys = open(true);
    keys->set_keys(eFormatPkcs1Der); // over a longer file
    EXPECT_TRUE(open(false)->get_private_key() == keys->get_private_key());
}

TEST_F(CertificateKeysTest, OtherFormatsAreUnknown) {
    for (const std::uint32_t number : {0U, 1U, 3U}) {
        const auto format = static_cast<EFormat>(number);
        for (const auto& info : {thrown_by([&] { open(true, format); }),
                                 thrown_by([&] { open(true)->set_keys(format); })}) {
            ASSERT_TRUE(info);
            EXPECT_EQ(info->code(), error::qncertificates_parameter_invalid);
            EXPECT_EQ(info->text(), "Unknown format of key files: " + std::to_string(number));
        }
    }
    EXPECT_TRUE(fs::is_empty(directory.path()));
}

TEST_F(CertificateKeysTest, AFailedWriteNamesTheFileAndKeepsTheObjectAsItWas) {
    make_pair();
    const Keys keys = open(false);
    const qncrypto::Key before = keys->get_private_key();
    const platform::SystemError full = platform::SystemError::posix(ENOSPC);
    for (const auto call : {platform::Call::seek, platform::Call::write, platform::Call::set_end,
                            platform::Call::flush}) {
        platform::testing::fail_next(call, full);
        const auto info = thrown_by([&] { keys->set_keys(eFormatPkcs1Der); });
        ASSERT_TRUE(info);
        EXPECT_EQ(info->code(), error::qncertificates_parameter_invalid);
        EXPECT_EQ(info->text(), "Writing to key file \"" + private_file + "\" failed");
        EXPECT_TRUE(info->nested());
        EXPECT_TRUE(keys->get_private_key() == before);
    }
}

TEST_F(CertificateKeysTest, AShortWriteGoesOn) {
    platform::testing::fail_next(platform::Call::write, {});
    const Keys keys = open(true);
    keys->set_keys(eFormatPkcs1Der);
    EXPECT_EQ(read_file(private_file), text_of(keys->get_private_key()));
}

TEST_F(CertificateKeysTest, APairThatCannotBeOpenedWholeIsNotTouched) {
    make_pair();
    const std::string before = read_file(private_file);
    fs::remove(public_file);
    fs::create_directory(public_file);
    const auto info = thrown_by([&] { open(true)->set_keys(eFormatPkcs1Der); });
    ASSERT_TRUE(info);
    EXPECT_EQ(info->text(),
              "Unable to open key file \"" + public_file + "\" for reading and writing");
    EXPECT_TRUE(info->nested());
    EXPECT_EQ(read_file(private_file), before);

    fs::remove(private_file);
    thrown_by([&] { open(true)->set_keys(eFormatPkcs1Der); });
    EXPECT_FALSE(fs::exists(private_file)) << "half a pair was left behind";
}

CHILD_PROCESS(replace_keys_as_nobody) {
    if (!support::become_nobody()) {
        return 2;
    }
    for (const bool regenerate : {false, true}) {
        try {
            const Keys keys(
                new CertificateKeys(arguments[0], arguments[1], eFormatPkcs1Der, regenerate));
            keys->set_keys(eFormatPkcs1Der);
            return 1;
        } catch (const qncore::ErrorException& exception) {
            support::say(exception.what());
        }
    }
    return 0;
}

TEST_F(CertificateKeysTest, WhoMayNotReadThePairMayNotReplaceIt) {
    if (!support::may_change_account()) {
        GTEST_SKIP() << "this account cannot turn into another";
    }
    make_pair();
    const std::string before_private = read_file(private_file);
    const std::string before_public = read_file(public_file);
    fs::permissions(directory.path(), fs::perms::all);
    struct Case {
        bool public_lost;
        fs::perms private_mode;
        fs::perms public_mode;
        const char* refusal;
    };
    const auto owner = fs::perms::owner_all;
    const auto reading = owner | fs::perms::others_read;
    const auto writing = reading | fs::perms::others_write;
    const Case cases[] = {
        {false, owner, owner, "PrivateKey.bin"},     {false, writing, owner, "PublicKey.bin"},
        {false, reading, reading, "PrivateKey.bin"}, {false, owner, writing, "PrivateKey.bin"},
        {true, reading, owner, "PrivateKey.bin"},
    };
    for (const Case& test : cases) {
        if (test.public_lost) {
            fs::remove(public_file);
        } else {
            fs::permissions(public_file, test.public_mode);
        }
        fs::permissions(private_file, test.private_mode);
        support::ChildProcess child("replace_keys_as_nobody", {public_file, private_file});
        EXPECT_THAT(child.next_line(), HasSubstr(test.refusal));
        EXPECT_THAT(child.next_line(), HasSubstr(test.refusal));
        EXPECT_EQ(child.wait(), 0);
        EXPECT_EQ(read_file(private_file), before_private);
        if (test.public_lost) {
            EXPECT_FALSE(fs::exists(public_file));
        } else {
            EXPECT_EQ(read_file(public_file), before_public);
        }
    }
}

} // namespace
} // namespace qncertificates
