#include <algorithm>
#include <limits>
#include <new>

#include <gtest/gtest.h>

#include "tests/qncrypto/bare_openssl.h"
#include "tests/support/allocations.h"

namespace qncrypto {
namespace {

using namespace test;

void expect_sizes(const Key& key, std::size_t size, std::size_t capacity) {
    EXPECT_EQ(key.size(), size);
    EXPECT_EQ(key.capacity(), capacity);
    EXPECT_EQ(key.data() == nullptr, capacity == 0);
    for (std::size_t i = size; i < capacity; ++i) {
        EXPECT_EQ(key.data()[i], 0) << i;
    }
}

TEST(Key, KeepsItsContentInStepsOfEight) {
    const std::size_t cases[][2] = {{0, 0}, {1, 8}, {7, 8}, {8, 8}, {9, 16}, {256, 256}};
    for (const auto& [size, capacity] : cases) {
        SCOPED_TRACE(size);
        const Bytes bytes = some_bytes(size);
        Key key(bytes.data(), size);
        expect_sizes(key, size, capacity);
        expect_sizes(Key(size), size, capacity);
        EXPECT_EQ(bytes_of(Key(size)), Bytes(size, 0));
        const unsigned char* const before = key.data();
        for (const std::size_t room : {std::size_t{0}, capacity}) {
            key.reserve(room);
            EXPECT_EQ(key.data(), before);
        }
        key.reserve(capacity + 1);
        expect_sizes(key, size, capacity + 8);
        EXPECT_EQ(bytes_of(key), bytes);
        key.resize(size / 2); // the cut bytes become zeros
        expect_sizes(key, size / 2, capacity + 8);
        key.resize(capacity + 9);
        expect_sizes(key, capacity + 9, capacity + 16);
        Bytes expected(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(size / 2));
        expected.resize(capacity + 9);
        EXPECT_EQ(bytes_of(key), expected);
    }
}

TEST(Key, TakesEvenItsOwnBytesAndAMoveLeavesNothing) {
    const Bytes bytes = some_bytes(20);
    Key key(bytes.data(), 20);
    key.assign(key.data() + 4, 9);
    expect_sizes(key, 9, 16);
    EXPECT_EQ(bytes_of(key), Bytes(bytes.begin() + 4, bytes.begin() + 13));
    Key copy(key);
    copy.data()[0] = 99;
    EXPECT_FALSE(key == copy);
    const Key moved(std::move(copy));
    expect_sizes(copy, 0, 0); // NOLINT(bugprone-use-after-move): the state after a move is defined
    EXPECT_EQ(moved.data()[0], 99);
    key.assign(nullptr, 0);
    expect_sizes(key, 0, 0);
    EXPECT_TRUE(key == copy);
}

TEST(Key, SizesBeyondAllMemoryAreRefusedWithNothingChanged) {
    constexpr std::size_t most = std::numeric_limits<std::size_t>::max();
    const Bytes bytes = some_bytes(4);
    Key key(bytes.data(), 4);
    for (const std::size_t size : {most, most - 8, most / 2}) {
        EXPECT_THROW(key.assign(bytes.data(), size), std::bad_alloc);
        EXPECT_THROW(key.resize(size), std::bad_alloc);
        EXPECT_THROW(key.reserve(size), std::bad_alloc);
        EXPECT_THROW(Key{size}, std::bad_alloc);
    }
    expect_sizes(key, 4, 8);
    EXPECT_EQ(bytes_of(key), bytes);
}

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
