#include <limits>
#include <new>

#include <gtest/gtest.h>

#include "tests/qncrypto/bare_openssl.h"

namespace qncrypto {
namespace {

using test::Bytes;
using test::bytes_of;
using test::some_bytes;

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

} // namespace
} // namespace qncrypto
