#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/rsaerr.h>

#include "qncrypto/errors.h"
#include "qncrypto/openssl_error.h"

namespace qncrypto {
namespace {

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
