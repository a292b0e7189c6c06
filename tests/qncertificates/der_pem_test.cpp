#include <random>
#include <string>

#include <gtest/gtest.h>

#include "qncertificates/der_pem.h"
#include "qncertificates/errors.h"
#include "qncore/error_exception.h"

namespace qncertificates {
namespace {

using Bytes = std::vector<unsigned char>;

std::string pem_of(const Bytes& bytes) {
    Bytes pem{'x'};
    convert_DER_to_PEM(bytes, pem);
    return {pem.begin(), pem.end()};
}

Bytes bytes_of(const std::string& pem) {
    Bytes bytes{'x'};
    convert_PEM_to_DER(Bytes(pem.begin(), pem.end()), bytes);
    return bytes;
}

Bytes random_bytes(std::size_t size) {
    static std::mt19937 random(1); // NOLINT(cert-msc51-cpp): the same bytes at each run
    Bytes bytes(size);
    for (unsigned char& byte : bytes) {
        byte = static_cast<unsigned char>(random());
    }
    return bytes;
}

TEST(DerPem, EveryLengthComesBackByteForByte) {
    for (std::size_t size = 0; size <= 600; ++size) {
        const Bytes bytes = random_bytes(size);
        const std::string pem = pem_of(bytes);
        EXPECT_EQ(bytes_of(pem), bytes) << size;
        EXPECT_EQ(pem.find_first_of("<&>]\r"), std::string::npos) << size;
    }
    const Bytes large = random_bytes(1 << 20);
    EXPECT_EQ(bytes_of(pem_of(large)), large);
}

TEST(DerPem, TheTextSaysWhatItIs) {
    EXPECT_EQ(pem_of({}), "-----BEGIN ENCIPHERED PASSWORD-----\n"
                          "-----END ENCIPHERED PASSWORD-----\n");
    EXPECT_EQ(pem_of(Bytes(50, 0)),
              "-----BEGIN ENCIPHERED PASSWORD-----\n"
              "AAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAAA\n"
              "AAA=\n"
              "-----END ENCIPHERED PASSWORD-----\n");
}

TEST(DerPem, LineEndsAndTextAroundTheBlockDoNotMatter) {
    const char* const texts[] = {
        "-----BEGIN ENCIPHERED PASSWORD-----\r\nAQID\r\n-----END ENCIPHERED PASSWORD-----\r\n",
        "-----BEGIN ENCIPHERED PASSWORD-----\nAQID\n-----END ENCIPHERED PASSWORD-----",
        ("\n\n of srv01\n-----BEGIN ENCIPHERED PASSWORD-----\nAQID\n"
         "-----END ENCIPHERED PASSWORD-----\n\n"),
    };
    for (const char* text : texts) {
        EXPECT_EQ(bytes_of(text), (Bytes{1, 2, 3})) << text;
    }
}

TEST(DerPem, OtherTextIsRefused) {
    const std::string good = pem_of(random_bytes(256));
    const char* const no_pem = "The text of an enciphered password is not PEM text";
    const char* const other = "The PEM text is not that of an enciphered password";
    struct Case {
        std::string text;
        const char* message;
        bool from_openssl;
    };
    const Case cases[] = {
        {"", no_pem, true},
        {"a password in clear", no_pem, true},
        {good.substr(1), no_pem, true},
        {good.substr(0, good.size() - 3), no_pem, true},
        {good.substr(0, 100), no_pem, true},
        {"-----BEGIN ENCIPHERED PASSWORD-----\nA*ID\n-----END ENCIPHERED PASSWORD-----\n", no_pem,
         true},
        {"-----BEGIN ENCIPHERED PASSWORD-----\nAQID\n-----END CERTIFICATE-----\n", no_pem, true},
        {"-----BEGIN CERTIFICATE-----\nAQID\n-----END CERTIFICATE-----\n", other, false},
        {"-----BEGIN ENCIPHERED PASSWORD-----\nProc-Type: 4,CLEAR\n\nAQID\n"
         "-----END ENCIPHERED PASSWORD-----\n",
         other, false},
    };
    for (const Case& test : cases) {
        Bytes out{7};
        try {
            convert_PEM_to_DER(Bytes(test.text.begin(), test.text.end()), out);
            ADD_FAILURE() << test.text;
        } catch (const qncore::ErrorException& exception) {
            EXPECT_EQ(exception.info()->code(), error::qncertificates_parameter_invalid);
            EXPECT_STREQ(exception.what(), test.message) << test.text;
            EXPECT_EQ(exception.info()->location().function.view(),
                      "qncertificates::convert_PEM_to_DER()");
            EXPECT_EQ(static_cast<bool>(exception.info()->nested()), test.from_openssl)
                << test.text;
        }
        EXPECT_EQ(out, Bytes{7}) << test.text;
    }
}

} // namespace
} // namespace qncertificates
