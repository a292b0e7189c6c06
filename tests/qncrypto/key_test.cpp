#include <limits>
#include <new>
#include <tuple>

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
    }
    expect_sizes(key, 4, 8);
    EXPECT_EQ(bytes_of(key), bytes);
}

constexpr std::size_t secret_size = 16;
constexpr unsigned char secret[secret_size + 1] = "a secret of mine";

std::string secret_text() {
    return {reinterpret_cast<const char*>(secret), secret_size};
}

void use_secrets() {
    std::string text = secret_text();
    text.resize(1);
    cleanse(text);
    EXPECT_EQ(text, std::string(1, '\0'));
    Bytes bytes(secret, secret + secret_size);
    bytes.clear();
    cleanse(bytes);
    EXPECT_TRUE(bytes.empty());
    Key key(secret, secret_size);
    key.reserve(100);
    const KeyPair& pair = key_pair();
    Key cipher;
    pair.private_context().encrypt(key.data(), secret_size, &cipher, RsaPadding::pkcs1);
    for (Key* const plain : {&key, static_cast<Key*>(nullptr)}) {
        pair.public_context().decrypt(cipher.data(), 128, plain, RsaPadding::pkcs1, nullptr);
    }
}

void convert_keys() {
    const Key& key = key_pair().private_key;
    const Key password(secret, secret_size);
    const std::string pem = RsaContext::private_key_as_pkcs8_pem(key, password, "aes-128-cbc");
    Key back = RsaContext::private_key_from_pkcs8_pem(pem.data(), pem.size(), password, nullptr);
    EXPECT_TRUE(back == key);
    Key public_key;
    RsaContext::create_key_pair(512, back, public_key);
}

TEST(Wiping, NoSecretIsInStorageThatIsGivenBack) {
    const Key& key = key_pair().private_key;
    const std::tuple<const unsigned char*, void (*)(), bool> cases[] = {
        {secret, [] { secret_text(); }, true}, // the watch sees it
        {secret, use_secrets, false},
        {key.data() + key.size() / 2, convert_keys, false},
    };
    for (const auto& [bytes, action, found] : cases) {
        EXPECT_EQ(support::blocks_given_back_with(bytes, secret_size, action) > 0, found);
    }
}

} // namespace
} // namespace qncrypto
