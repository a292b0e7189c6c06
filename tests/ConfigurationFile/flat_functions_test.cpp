#include <functional>

#include "ConfigurationFile/flat_functions.h"
#include "qncore/string_conversion.h"
#include "tests/ConfigurationFile/store_fixture.h"

namespace store_test {
namespace {

using vdcertificates::ConfigurationFile;

/// A buffer and its length as the flat functions take them.
struct Output {
    std::vector<wchar_t> buffer;
    unsigned int length = 0;
    bool has_buffer = true;
    bool has_length = true;

    explicit Output(std::size_t size = 40)
        : buffer(size, L'~')
        , length(static_cast<unsigned int>(size)) {}
    wchar_t* data() { return has_buffer ? buffer.data() : nullptr; }
    unsigned int* size() { return has_length ? &length : nullptr; }
    std::wstring text() const { return {buffer.begin(), buffer.end()}; }
};

/// A text in a buffer of some size, the rest filled with `fill`.
std::wstring in_buffer(std::wstring text, std::size_t size, wchar_t fill = L'\0') {
    text.resize(size, fill);
    return text;
}

struct Outputs {
    Output publicKey, privateKey, certificate, password, trusted;
    Output* begin() { return &publicKey; }
    Output* end() { return &trusted + 1; }
};

using TwelveArguments = decltype(get_devices_certificate_information);

struct Function {
    const char* name;
    std::function<int(Outputs&, int)> call;
    const char* answer; ///< public key of the entry that it is to find
    bool trusted;
};

Function twelve(const char* name, TwelveArguments* function, const char* answer) {
    return {name,
            [function](Outputs& o, int flags) {
                return function(L"srv", o.publicKey.data(), o.publicKey.size(), o.privateKey.data(),
                                o.privateKey.size(), o.certificate.data(), o.certificate.size(),
                                o.password.data(), o.password.size(), o.trusted.data(),
                                o.trusted.size(), flags);
            },
            answer, true};
}

std::vector<Function> all_functions() {
    return {
        {"cluster",
         [](Outputs& o, int flags) {
             return ::get_cluster_certificate_information(
                 o.publicKey.data(), o.publicKey.size(), o.privateKey.data(), o.privateKey.size(),
                 o.certificate.data(), o.certificate.size(), o.password.data(), o.password.size(),
                 flags);
         },
         "cluster", false},
        {"subsystems",
         [](Outputs& o, int flags) {
             return ::get_subsystems_certificate_information(
                 L"SRV", o.publicKey.data(), o.publicKey.size(), o.privateKey.data(),
                 o.privateKey.size(), o.certificate.data(), o.certificate.size(), o.password.data(),
                 o.password.size(), flags);
         },
         "subsystems", false},
        twelve("subsystems server", ::get_subsystems_server_certificate_information, "server"),
        // Required: this function answers for the subsystems server.
        twelve("subsystems remote client", ::get_subsystems_remote_client_certificate_information,
               "server"),
        twelve("remote client", ::get_remote_client_certificate_information, "client"),
        twelve("devices", ::get_devices_certificate_information, "device"),
    };
}

class FlatFunctionsTest : public StoreTest {
  protected:
    FlatFunctionsTest() {
        ConfigurationFile file;
        const std::string key = "k\xC3\xA4y";
        EXPECT_TRUE(file.set_cluster_certificate_information("cluster", key, "cert", "pass"));
        EXPECT_TRUE(
            file.set_subsystems_certificate_information("SRV", "subsystems", key, "cert", "pass"));
        EXPECT_TRUE(file.set_subsystems_server_certificate_information("SRV", "server", key, "cert",
                                                                       "pass", "trust"));
        EXPECT_TRUE(file.set_subsystems_remote_client_certificate_information(
            "SRV", "remote", key, "cert", "pass", "trust"));
        EXPECT_TRUE(file.set_remote_client_certificate_information("SRV", "client", key, "cert",
                                                                   "pass", "trust"));
        EXPECT_TRUE(file.set_devices_certificate_information("SRV", "device", key, "cert", "pass",
                                                             "trust"));
    }

    const std::vector<Function> functions = all_functions();
};

TEST_F(FlatFunctionsTest, FlagsZeroCopiesAndFillsWithZeros) {
    for (const Function& function : functions) {
        Outputs outputs;
        outputs.certificate.has_buffer = false;
        EXPECT_EQ(function.call(outputs, 0), 1) << function.name;
        EXPECT_EQ(outputs.publicKey.text(), in_buffer(qncore::to_wstring(function.answer), 40))
            << function.name;
        EXPECT_EQ(outputs.privateKey.text(), in_buffer(L"k\u00E4y", 40));
        EXPECT_EQ(outputs.certificate.text(), in_buffer(L"", 40, L'~'));
        EXPECT_EQ(outputs.password.text(), in_buffer(L"pass", 40));
        EXPECT_EQ(outputs.trusted.text(),
                  function.trusted ? in_buffer(L"trust", 40) : in_buffer(L"", 40, L'~'));
        EXPECT_EQ(outputs.publicKey.length, 40U);
    }
}

TEST_F(FlatFunctionsTest, FlagsDecideWhatIsTouched) {
    struct Case {
        int flags;
        bool lengths;
    };
    for (const Case& test : {Case{1, false}, Case{2, true}, Case{3, true}, Case{4, false},
                             Case{-1, true}, Case{8, false}}) {
        for (const Function& function : functions) {
            Outputs outputs;
            outputs.privateKey.has_buffer = false;
            EXPECT_EQ(function.call(outputs, test.flags), 1) << function.name;
            const unsigned int untouched = 40;
            EXPECT_EQ(outputs.publicKey.length,
                      test.lengths ? std::string(function.answer).size() + 1 : untouched);
            EXPECT_EQ(outputs.privateKey.length, test.lengths ? 4 : untouched);
            EXPECT_EQ(outputs.certificate.length, test.lengths ? 5 : untouched);
            EXPECT_EQ(outputs.password.length, test.lengths ? 5 : untouched);
            EXPECT_EQ(outputs.trusted.length, test.lengths && function.trusted ? 6 : untouched);
            EXPECT_EQ(outputs.publicKey.text(), in_buffer(L"", 40, L'~'));
        }
    }
}

TEST_F(FlatFunctionsTest, ABufferNeedsRoomForTheCharactersOnly) {
    for (const Function& function : functions) {
        Outputs outputs;
        outputs.certificate = Output(4);
        EXPECT_EQ(function.call(outputs, 0), 1) << function.name;
        EXPECT_EQ(outputs.certificate.text(), L"cert");

        outputs.password = Output(10);
        outputs.certificate = Output(3);
        EXPECT_EQ(function.call(outputs, 0), -2) << function.name;
        EXPECT_EQ(outputs.privateKey.text(), in_buffer(L"k\u00E4y", 40));
        EXPECT_EQ(outputs.certificate.text(), L"~~~");
        EXPECT_EQ(outputs.password.text(), in_buffer(L"", 10, L'~'));
    }
}

TEST_F(FlatFunctionsTest, NullLengthsAreRefusedButForOne) {
    for (const Function& function : functions) {
        for (std::size_t place = 0; place < (function.trusted ? 5U : 4U); ++place) {
            Outputs outputs;
            Output& output = outputs.begin()[place];
            output.has_length = false;
            output.has_buffer = false;
            // Required: with a trusted pair the certificate's length is never tested.
            const bool tested = place != 2 || !function.trusted;
            EXPECT_EQ(function.call(outputs, 0), tested ? -2 : 1) << function.name << place;
            EXPECT_EQ(outputs.password.text(),
                      tested || place == 3 ? in_buffer(L"", 40, L'~') : in_buffer(L"pass", 40));
        }
    }
}

TEST_F(FlatFunctionsTest, AFileThatCannotBeReadGivesZeroAndEmptyTexts) {
    write_configuration("<ORVACertificates>");
    for (const Function& function : functions) {
        Outputs copied;
        EXPECT_EQ(function.call(copied, 0), 0) << function.name;
        EXPECT_EQ(copied.publicKey.text(), in_buffer(L"", 40));
        Outputs measured;
        EXPECT_EQ(function.call(measured, 2), 0) << function.name;
        EXPECT_EQ(measured.publicKey.length, 1U);
        EXPECT_EQ(measured.password.length, 1U);
    }
}

TEST_F(FlatFunctionsTest, AnUnknownServerIsRead) {
    Outputs o;
    for (const wchar_t* server : {L"unknown", L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(::get_subsystems_certificate_information(
                      server, o.publicKey.data(), o.publicKey.size(), o.privateKey.data(),
                      o.privateKey.size(), o.certificate.data(), o.certificate.size(),
                      o.password.data(), o.password.size(), 0),
                  1);
        EXPECT_EQ(o.publicKey.text(), in_buffer(L"", 40));
    }
}

TEST_F(FlatFunctionsTest, FailuresOfKeysAndConversionsPassThrough) {
    Outputs outputs;
    write_configuration(document("<ServerGroupCertificate><PublicKeyPath>&#1114111;x"
                                 "</PublicKeyPath></ServerGroupCertificate>"));
    EXPECT_EQ(functions[0].call(outputs, 0), 1);
    const std::wstring beyond = {static_cast<wchar_t>(0xD800), 0};
    EXPECT_ANY_THROW(::get_subsystems_certificate_information(
        beyond.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0));
    std::filesystem::remove_all(machine.root());
    support::write_file(machine.root(), "a file where the directory of the keys should be");
    EXPECT_ANY_THROW(functions[0].call(outputs, 0));
}

} // namespace
} // namespace store_test
