#include <algorithm>

#include <gtest/gtest.h>

#include "tests/qncrypto/bare_openssl.h"
#include "tests/support/allocations.h"

namespace qncrypto {
namespace {

using namespace test;

constexpr std::size_t watched_size = 16;
constexpr unsigned char secret[watched_size + 1] = "a secret of mine";

int blocks_given_back(const unsigned char* bytes, void (*function)()) {
    return support::blocks_given_back_with(bytes, watched_size, function);
}

void forget_text() {
    const std::string text(reinterpret_cast<const char*>(secret), watched_size);
}

void cleanse_containers() {
    std::string text(reinterpret_cast<const char*>(secret), watched_size);
    cleanse(text);
    EXPECT_EQ(text, std::string(watched_size, '\0'));
    std::string cut(reinterpret_cast<const char*>(secret), watched_size);
    cut.resize(1);
    cleanse(cut);
    Bytes bytes(secret, secret + watched_size);
    bytes.clear();
    cleanse(bytes);
    EXPECT_TRUE(bytes.empty());
}

void use_keys() {
    Key key(secret, watched_size);
    Key copy(key);
    copy.reserve(100);
    copy.resize(200);
    copy.assign(copy.data(), watched_size);
    key = copy;
    key = Key(3);
    key.swap(copy);
    const Key moved(std::move(key));
}

void use_operations() {
    const auto private_context = key_pair().private_context();
    const auto public_context = key_pair().public_context();
    Key cipher;
    Key plain(secret, watched_size);
    private_context.encrypt(secret, watched_size, &cipher, RsaPadding::pkcs1);
    public_context.decrypt(cipher.data(), 128, &plain, RsaPadding::pkcs1, nullptr);
    EXPECT_ANY_THROW(
        public_context.decrypt(cipher.data(), 127, &plain, RsaPadding::pkcs1, nullptr));
    EXPECT_ANY_THROW(private_context.encrypt(secret, watched_size, &plain, RsaPadding::none));
    public_context.encrypt(secret, watched_size, &cipher, RsaPadding::oaep);
    private_context.decrypt(cipher.data(), 128, &plain, RsaPadding::oaep, nullptr);
    Key unpadded(128);
    std::copy_n(secret, watched_size, unpadded.data() + 100);
    private_context.encrypt(unpadded.data(), 128, &cipher, RsaPadding::none);
    public_context.decrypt(cipher.data(), 128, nullptr, RsaPadding::none, nullptr);
}

/// The secret here is a stretch of the private key itself.
void convert_keys() {
    const KeyPair& pair = key_pair();
    const Key password(secret, watched_size);
    const std::string pem =
        RsaContext::private_key_as_pkcs8_pem(pair.private_key, password, "aes-128-cbc");
    Key back = RsaContext::private_key_from_pkcs8_pem(pem.data(), pem.size(), password, nullptr);
    EXPECT_TRUE(back == pair.private_key);
    EXPECT_TRUE(RsaContext::public_key_from_private_key(back) == pair.public_key);
    EXPECT_ANY_THROW(RsaContext::private_key_as_pkcs8_pem(back, password, "rot13"));
    Key public_key;
    RsaContext::create_key_pair(512, back, public_key);
}

TEST(Wiping, NoSecretIsInStorageThatIsGivenBack) {
    EXPECT_GT(blocks_given_back(secret, forget_text), 0) << "the watch sees nothing";
    EXPECT_EQ(blocks_given_back(secret, cleanse_containers), 0);
    EXPECT_EQ(blocks_given_back(secret, use_keys), 0);
    EXPECT_EQ(blocks_given_back(secret, use_operations), 0);
    const Key& key = key_pair().private_key;
    EXPECT_EQ(blocks_given_back(key.data() + key.size() / 2, convert_keys), 0);
}

} // namespace
} // namespace qncrypto
