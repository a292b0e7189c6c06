#include <functional>

#include "ConfigurationFile/flat_functions.h"
#include "tests/ConfigurationFile/store_fixture.h"

namespace store_test {
namespace {

using vdcertificates::ConfigurationFile;

/// A buffer and its length as the flat functions take them.
struct Output {
    std::wstring buffer;
    unsigned int length = 0;
    bool has_buffer = true;
    bool has_length = true;

    explicit Output(unsigned int size = 6)
        : buffer(size, L'~')
        , length(size) {}
    wchar_t* data() { return has_buffer ? buffer.data() : nullptr; }
    unsigned int* size() { return has_length ? &length : nullptr; }
};

struct Outputs {
    Output publicKey, privateKey, certificate, password, trusted;
    Output& operator[](std::size_t place) { return *(&publicKey + place); }
};

/// The buffers, with "0" for zeros and the lengths that changed.
std::wstring show(Outputs outputs) {
    std::wstring text;
    for (std::size_t place = 0; place < 5; ++place) {
        Output& output = outputs[place];
        std::replace(output.buffer.begin(), output.buffer.end(), L'\0', L'0');
        text += (place > 0 ? L" " : L"") + output.buffer;
        text += output.length != output.buffer.size() ? L":" + std::to_wstring(output.length) : L"";
    }
    return text;
}

struct Function {
    const char* name;
    std::function<int(Outputs&, int)> call;
    std::wstring answer; ///< public key of the entry that it is to find
    bool trusted;
};

template <class FlatFunction, class... Server>
Function without_trusted(const char* name, FlatFunction* function, const wchar_t* answer,
                         Server... server) {
    return {name,
            [=](Outputs& o, int flags) {
                return function(server..., o.publicKey.data(), o.publicKey.size(),
                                o.privateKey.data(), o.privateKey.size(), o.certificate.data(),
                                o.certificate.size(), o.password.data(), o.password.size(), flags);
            },
            answer, false};
}

Function with_trusted(const char* name, decltype(get_devices_certificate_information)* function,
                      const wchar_t* answer) {
    return {name,
            [=](Outputs& o, int flags) {
                return function(L"srv", o.publicKey.data(), o.publicKey.size(), o.privateKey.data(),
                                o.privateKey.size(), o.certificate.data(), o.certificate.size(),
                                o.password.data(), o.password.size(), o.trusted.data(),
                                o.trusted.size(), flags);
            },
            answer, true};
}

class FlatFunctionsTest : public StoreTest {
  protected:
    FlatFunctionsTest() {
        ConfigurationFile file;
        const std::string key = "k\xC3\xA4y";
        file.set_cluster_certificate_information("clu", key, "cert", "pass");
        file.set_subsystems_certificate_information("SRV", "sub", key, "cert", "pass");
        file.set_subsystems_server_certificate_information("SRV", "ser", key, "cert", "pass", "tr");
        file.set_subsystems_remote_client_certificate_information("SRV", "rem", key, "cert", "pass",
                                                                  "tr");
        file.set_remote_client_certificate_information("SRV", "cli", key, "cert", "pass", "tr");
        file.set_devices_certificate_information("SRV", "dev", key, "cert", "pass", "tr");
    }

    const std::vector<Function> functions = {
        without_trusted("cluster", ::get_cluster_certificate_information, L"clu"),
        without_trusted("subsystems", ::get_subsystems_certificate_information, L"sub", L"SRV"),
        with_trusted("server", ::get_subsystems_server_certificate_information, L"ser"),
        // Required: this function answers for the subsystems server.
        with_trusted("remote", ::get_subsystems_remote_client_certificate_information, L"ser"),
        with_trusted("client", ::get_remote_client_certificate_information, L"cli"),
        with_trusted("devices", ::get_devices_certificate_information, L"dev"),
    };
};

TEST_F(FlatFunctionsTest, CopyOrMeasureByTheFlags) {
    using Change = void (*)(Outputs&);
    const Change none = [](Outputs&) {};
    const struct {
        const char* what;
        Change change;
        int flags;
        int result;
        std::wstring expected; ///< "@" for the answer
    } cases[] = {
        {"copies", none, 0, 1, L"@000 k\u00E4y000 cert00 pass00 tr0000"},
        {"passes a null buffer over", [](Outputs& o) { o.certificate.has_buffer = false; }, 0, 1,
         L"@000 k\u00E4y000 ~~~~~~ pass00 tr0000"},
        {"needs room for the characters only", [](Outputs& o) { o.certificate = Output(4); }, 0, 1,
         L"@000 k\u00E4y000 cert pass00 tr0000"},
        {"stops where room is short", [](Outputs& o) { o.certificate = Output(3); }, 0, -2,
         L"@000 k\u00E4y000 ~~~ ~~~~~~ ~~~~~~"},
        {"touches nothing", none, 1, 1, L"~~~~~~ ~~~~~~ ~~~~~~ ~~~~~~ ~~~~~~"},
        {"touches nothing", none, 8, 1, L"~~~~~~ ~~~~~~ ~~~~~~ ~~~~~~ ~~~~~~"},
        {"measures", none, 2, 1, L"~~~~~~:4 ~~~~~~:4 ~~~~~~:5 ~~~~~~:5 ~~~~~~:3"},
        {"measures", none, -1, 1, L"~~~~~~:4 ~~~~~~:4 ~~~~~~:5 ~~~~~~:5 ~~~~~~:3"},
        {"measures without a buffer", [](Outputs& o) { o.publicKey.has_buffer = false; }, 3, 1,
         L"~~~~~~:4 ~~~~~~:4 ~~~~~~:5 ~~~~~~:5 ~~~~~~:3"},
    };
    for (const auto& test : cases) {
        for (const Function& function : functions) {
            Outputs outputs;
            test.change(outputs);
            EXPECT_EQ(function.call(outputs, test.flags), test.result)
                << test.what << ' ' << function.name;
            std::wstring expected = test.expected;
            if (expected[0] == L'@') {
                expected.replace(0, 1, function.answer);
            }
            if (!function.trusted) {
                expected.replace(expected.rfind(L' '), std::wstring::npos, L" ~~~~~~");
            }
            EXPECT_EQ(show(outputs), expected) << test.what << ' ' << function.name;
        }
    }
}

TEST_F(FlatFunctionsTest, NullLengthsAreRefusedButForOne) {
    for (const Function& function : functions) {
        for (std::size_t place = 0; place < (function.trusted ? 5U : 4U); ++place) {
            Outputs outputs;
            outputs[place].has_length = false;
            outputs[place].has_buffer = false;
            // Required: with a trusted pair the certificate's length is never tested.
            const bool tested = place != 2 || !function.trusted;
            EXPECT_EQ(function.call(outputs, 0), tested ? -2 : 1) << function.name << place;
            EXPECT_EQ(show(outputs), tested ? L"~~~~~~ ~~~~~~ ~~~~~~ ~~~~~~ ~~~~~~"
                                            : function.answer + L"000 k\u00E4y000 ~~~~~~ pass00 "
                                                                L"tr0000");
        }
    }
}

TEST_F(FlatFunctionsTest, WhatIsNotFoundAndWhatCannotBeReadAreEmpty) {
    for (const wchar_t* server : {L"unknown", L"", static_cast<const wchar_t*>(nullptr)}) {
        Outputs outputs;
        EXPECT_EQ(without_trusted("", ::get_subsystems_certificate_information, L"", server)
                      .call(outputs, 0),
                  1);
        EXPECT_EQ(show(outputs), L"000000 000000 000000 000000 ~~~~~~");
    }
    write_configuration("<ORVACertificates>");
    for (const Function& function : functions) {
        Outputs copied;
        EXPECT_EQ(function.call(copied, 0), 0) << function.name;
        EXPECT_EQ(show(copied).substr(0, 27), L"000000 000000 000000 000000");
        Outputs measured;
        EXPECT_EQ(function.call(measured, 2), 0) << function.name;
        EXPECT_EQ(show(measured).substr(0, 35), L"~~~~~~:1 ~~~~~~:1 ~~~~~~:1 ~~~~~~:1");
    }
}

TEST_F(FlatFunctionsTest, FailuresOfKeysAndConversionsPassThrough) {
    Outputs outputs;
    const std::wstring beyond = {static_cast<wchar_t>(0xD800), 0};
    EXPECT_ANY_THROW(::get_subsystems_certificate_information(
        beyond.c_str(), nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, 0));
    support::remove_all(machine.root());
    support::write_file(machine.root(), "a file where the directory of the keys should be");
    EXPECT_ANY_THROW(functions[0].call(outputs, 0));
}

} // namespace
} // namespace store_test
