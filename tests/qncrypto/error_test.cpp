#include <algorithm>

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
    for (const int depth : {-1, 0, 1, 4, 5, 32}) {
        SCOPED_TRACE(depth);
        ERR_clear_error();
        for (int line = 1; line <= 5; ++line) {
            put("f", "f.c", line, ERR_LIB_RSA, ERR_R_INTERNAL_ERROR);
        }
        auto record = openssl_error_info(depth);
        const auto kept = openssl_error_info(32); // those beyond the depth are still there
        for (int line = 1; line <= 5; ++line) {
            if (line == std::max(depth, 0) + 1) {
                EXPECT_FALSE(record);
                record = kept;
            }
            ASSERT_TRUE(record) << line;
            EXPECT_EQ(record->location().line, static_cast<unsigned>(line));
            record = record->nested();
        }
        EXPECT_FALSE(record);
    }
}

} // namespace
} // namespace qncrypto
