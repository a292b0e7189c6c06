#include <gtest/gtest.h>

#include "qncertificates/der_pem.h"
#include "tests/support/failure.h"

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

std::string block(const std::string& content, const std::string& label = "ENCIPHERED PASSWORD") {
    return "-----BEGIN " + label + "-----\n" + content + "-----END " + label + "-----\n";
}

TEST(DerPem, EveryLengthComesBackByteForByte) {
    Bytes bytes;
    for (std::size_t size = 0; size <= 600; ++size) {
        const std::string pem = pem_of(bytes);
        EXPECT_EQ(bytes_of(pem), bytes) << size;
        EXPECT_EQ(pem.find_first_of("<&>]\r"), std::string::npos) << size;
        bytes.push_back(static_cast<unsigned char>(size * size));
    }
    EXPECT_EQ(pem_of({}), block(""));
    EXPECT_EQ(pem_of(Bytes(50, 0)), block(std::string(64, 'A') + "\nAAA=\n"));
}

TEST(DerPem, LineEndsAndTextAroundTheBlockDoNotMatter) {
    const std::string head = "-----BEGIN ENCIPHERED PASSWORD-----";
    const std::string tail = "-----END ENCIPHERED PASSWORD-----";
    for (const std::string& text :
         {head + "\r\nAQID\r\n" + tail + "\r\n", "\n of srv01\n" + head + "\nAQID\n" + tail}) {
        EXPECT_EQ(bytes_of(text), (Bytes{1, 2, 3})) << text;
    }
}

TEST(DerPem, OtherTextIsRefused) {
    const std::string good = pem_of(Bytes(256, 7));
    const std::pair<std::string, bool> cases[] = {
        // True for what OpenSSL refuses.
        {"", true},
        {good.substr(1), true},
        {good.substr(0, 100), true},
        {block("A*ID\n"), true},
        {block("AQID\n", "CERTIFICATE"), false},
        {block("Proc-Type: 4,CLEAR\n\nAQID\n"), false},
    };
    for (const auto& [text, from_openssl] : cases) {
        Bytes out{7};
        const auto convert = [&text = text, &out] {
            convert_PEM_to_DER(Bytes(text.begin(), text.end()), out);
        };
        support::check_failures(
            {{convert,
              "error.qncertificates.parameter.invalid|qncertificates::convert_PEM_to_DER()",
              from_openssl ? "error.qncrypto.openssl" : ""}});
        EXPECT_EQ(out, Bytes{7}) << text;
    }
}

} // namespace
} // namespace qncertificates
