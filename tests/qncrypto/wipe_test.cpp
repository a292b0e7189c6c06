#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

#include <gtest/gtest.h>

#include "tests/qncrypto/bare_openssl.h"

// This program's allocator looks at each block that is given back while a watch is on, and counts
// those in which the secret still stands.
namespace {

constexpr std::size_t header = 16;

std::atomic<const unsigned char*> watched{nullptr};
constexpr std::size_t watched_size = 16;
std::atomic<int> found{0};

void* allocate(std::size_t size) noexcept {
    auto* const block = static_cast<unsigned char*>(std::malloc(size + header));
    if (block == nullptr) {
        return nullptr;
    }
    *reinterpret_cast<std::size_t*>(block) = size;
    return block + header;
}

void* allocate_or_throw(std::size_t size) {
    void* const block = allocate(size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void give_back(void* pointer) noexcept {
    if (pointer == nullptr) {
        return;
    }
    auto* const bytes = static_cast<unsigned char*>(pointer);
    const unsigned char* const secret = watched.load();
    if (secret != nullptr) {
        const std::size_t size = *reinterpret_cast<std::size_t*>(bytes - header);
        if (std::search(bytes, bytes + size, secret, secret + watched_size) != bytes + size) {
            ++found;
        }
    }
    std::free(bytes - header);
}

} // namespace

void* operator new(std::size_t size) {
    return allocate_or_throw(size);
}
void* operator new[](std::size_t size) {
    return allocate_or_throw(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* pointer) noexcept {
    give_back(pointer);
}
void operator delete[](void* pointer) noexcept {
    give_back(pointer);
}
void operator delete(void* pointer, std::size_t) noexcept {
    give_back(pointer);
}
void operator delete[](void* pointer, std::size_t) noexcept {
    give_back(pointer);
}
void operator delete(void* pointer, const std::nothrow_t&) noexcept {
    give_back(pointer);
}
void operator delete[](void* pointer, const std::nothrow_t&) noexcept {
    give_back(pointer);
}

namespace qncrypto {
namespace {

using namespace test;

constexpr unsigned char secret[watched_size + 1] = "a secret of mine";

/// How many blocks with the secret in them the function gives back.
template <class Function>
int blocks_given_back(const unsigned char* bytes, const Function& function) {
    found = 0;
    watched = bytes;
    function();
    watched = nullptr;
    return found;
}

TEST(Wiping, TheWatchSeesASecretThatIsGivenBack) {
    const auto forget = [](bool clean) {
        std::string text(40, 'x');
        text.append(reinterpret_cast<const char*>(secret), watched_size);
        if (clean) {
            cleanse(text);
        }
    };
    EXPECT_GT(blocks_given_back(secret, [&] { forget(false); }), 0);
    // What the text held before it grew was without the secret.
    EXPECT_EQ(blocks_given_back(secret, [&] { forget(true); }), 0);
}

TEST(Wiping, WhatATextHeldBeforeItWasCutIsCleansedToo) {
    EXPECT_EQ(blocks_given_back(secret,
                                [] {
                                    std::string text(reinterpret_cast<const char*>(secret),
                                                     watched_size);
                                    text.resize(1);
                                    cleanse(text);
                                    Bytes bytes(secret, secret + watched_size);
                                    bytes.clear();
                                    cleanse(bytes);
                                }),
              0);
}

TEST(Wiping, KeysGiveNothingBack) {
    EXPECT_EQ(blocks_given_back(secret,
                                [] {
                                    Key key(secret, watched_size);
                                    Key copy(key);
                                    copy.reserve(100);
                                    copy.resize(200);
                                    copy.assign(copy.data(), watched_size);
                                    key = copy;
                                    key = Key(3);
                                    key.swap(copy);
                                    const Key moved(std::move(key));
                                }),
              0);
}

TEST(Wiping, OperationsGiveNothingBackWhetherTheyFailOrNot) {
    const KeyPair& pair = key_pair();
    const auto private_context = pair.private_context();
    const auto public_context = pair.public_context();
    Key cipher;
    private_context.encrypt(secret, watched_size, &cipher, RsaPadding::pkcs1);
    Key for_private;
    public_context.encrypt(secret, watched_size, &for_private, RsaPadding::oaep);
    Bytes unpadded(128, 0);
    std::copy_n(secret, watched_size, unpadded.begin() + 100);
    Key unpadded_cipher;
    private_context.encrypt(unpadded.data(), 128, &unpadded_cipher, RsaPadding::none);

    EXPECT_EQ(blocks_given_back(
                  secret,
                  [&] {
                      Key out(secret, watched_size);
                      private_context.encrypt(secret, watched_size, &out, RsaPadding::pkcs1);
                      public_context.decrypt(cipher.data(), 128, &out, RsaPadding::pkcs1, nullptr);
                      private_context.decrypt(for_private.data(), 128, &out, RsaPadding::oaep,
                                              nullptr);
                      public_context.decrypt(unpadded_cipher.data(), 128, nullptr, RsaPadding::none,
                                             nullptr);
                      EXPECT_ANY_THROW(public_context.decrypt(cipher.data(), 127, &out,
                                                              RsaPadding::pkcs1, nullptr));
                      EXPECT_ANY_THROW(
                          private_context.encrypt(secret, watched_size, &out, RsaPadding::none));
                  }),
              0);
}

TEST(Wiping, ConversionsGiveNoPrivateKeyBack) {
    const KeyPair& pair = key_pair();
    // From the middle of the private key's bytes, beyond the modulus.
    const unsigned char* const inside = pair.private_key.data() + pair.private_key.size() / 2;
    const Key password(secret, watched_size);
    EXPECT_EQ(
        blocks_given_back(
            inside,
            [&] {
                const std::string pem =
                    RsaContext::private_key_as_pkcs8_pem(pair.private_key, password, "aes-128-cbc");
                Key back = RsaContext::private_key_from_pkcs8_pem(pem.data(), pem.size(), password,
                                                                  nullptr);
                EXPECT_TRUE(back == pair.private_key);
                EXPECT_TRUE(RsaContext::public_key_from_private_key(back) == pair.public_key);
                EXPECT_ANY_THROW(RsaContext::private_key_as_pkcs8_pem(back, password, "rot13"));
                Key public_key;
                RsaContext::create_key_pair(512, back, public_key);
            }),
        0);
}

} // namespace
} // namespace qncrypto
