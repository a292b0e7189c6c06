#include <algorithm>
#include <array>
#include <functional>
#include <tuple>

#include "ConfigurationFile/flat_functions.h"
#include "tests/ConfigurationFile/store_fixture.h"

namespace store_test {
namespace {

using vdcertificates::ConfigurationFile;

/// A buffer and its length as the flat functions take them.
struct Output {
    std::wstring buffer = L"~~~~~~";
    unsigned int length = 6;
    bool has_buffer = true;
    bool has_length = true;

    wchar_t* data() { return has_buffer ? buffer.data() : nullptr; }
    unsigned int* size() { return has_length ? &length : nullptr; }
};

/// Public key, private key, certificate, password, trusted certificate.
using Outputs = std::array<Output, 5>;

/// The buffers, with "0" for NUL, and the lengths that changed.
std::wstring show(Outputs outputs) {
    std::wstring text;
    for (Output& output : outputs) {
        std::replace(output.buffer.begin(), output.buffer.end(), L'\0', L'0');
        text += output.buffer + (output.length != 6 ? std::to_wstring(output.length) : L"") + L' ';
    }
    return text;
}

struct Function {
    std::wstring answer; ///< the public key of its entry
    bool trusted;
    std::function<int(Outputs&, int)> call;
};

constexpr std::make_index_sequence<4> plain;
constexpr std::make_index_sequence<5> trusted;

template <std::size_t... i, class Flat, class... Server>
Function bind(const wchar_t* answer, std::index_sequence<i...> /*outputs*/, Flat* flat,
              Server... server) {
    return {answer, sizeof...(i) == 5, [=](Outputs& o, int flags) {
                return std::apply([=](auto... all) { return flat(server..., all..., flags); },
                                  std::tuple_cat(std::tuple(o[i].data(), o[i].size())...));
            }};
}

class FlatFunctionsTest : public StoreTest {
  protected:
    FlatFunctionsTest() {
        ConfigurationFile file;
        const std::string key = "k\xC3\xA4y";
        file.set_cluster_certificate_information("clu", key, "cert", "pass");
        file.set_subsystems_certificate_information("SRV", "sub", key, "cert", "pass");
        file.set_subsystems_server_certificate_information("SRV", "ser", key, "cert", "pass", "tr");
        file.set_remote_client_certificate_information("SRV", "cli", key, "cert", "pass", "tr");
        file.set_devices_certificate_information("SRV", "dev", key, "cert", "pass", "tr");
    }

    const std::vector<Function> functions = {
        bind(L"clu", plain, ::get_cluster_certificate_information),
        bind(L"sub", plain, ::get_subsystems_certificate_information, L"SRV"),
        bind(L"ser", trusted, ::get_subsystems_server_certificate_information, L"srv"),
        // Required: this function returns the entry of the subsystems server.
        bind(L"ser", trusted, ::get_subsystems_remote_client_certificate_information, L"srv"),
        bind(L"cli", trusted, ::get_remote_client_certificate_information, L"srv"),
        bind(L"dev", trusted, ::get_devices_certificate_information, L"srv"),
    };
};

TEST_F(FlatFunctionsTest, CopyOrMeasureByTheFlags) {
    using Change = void (*)(Outputs&);
    const Change none = [](Outputs&) {};
    const std::wstring untouched = L"~~~~~~ ~~~~~~ ~~~~~~ ~~~~~~ ~~~~~~ ";
    const std::wstring measured = L"~~~~~~4 ~~~~~~4 ~~~~~~5 ~~~~~~5 ~~~~~~3 ";
    // What is changed in the arguments, the flags, the result, and the outputs with "@" for the
    // answer.
    const std::tuple<const char*, Change, int, int, std::wstring> cases[] = {
        {"copies", none, 0, 1, L"@000 k\u00E4y000 cert00 pass00 tr0000 "},
        {"skips a null buffer", [](Outputs& o) { o[2].has_buffer = false; }, 0, 1,
         L"@000 k\u00E4y000 ~~~~~~ pass00 tr0000 "},
        {"needs room for the characters only", [](Outputs& o) { o[2].length = 4; }, 0, 1,
         L"@000 k\u00E4y000 cert~~4 pass00 tr0000 "},
        {"stops at a buffer that is too short", [](Outputs& o) { o[2].length = 3; }, 0, -2,
         L"@000 k\u00E4y000 ~~~~~~3 ~~~~~~ ~~~~~~ "},
        {"touches nothing", none, 1, 1, untouched},
        {"measures", none, 2, 1, measured},
        {"measures without a buffer", [](Outputs& o) { o[0].has_buffer = false; }, 3, 1, measured},
        {"refuses a null length", [](Outputs& o) { o[0].has_length = false; }, 0, -2, untouched},
        {"refuses a null length", [](Outputs& o) { o[3].has_length = false; }, 0, -2, untouched},
    };
    for (const auto& [what, change, flags, result, expected] : cases) {
        for (const Function& function : functions) {
            SCOPED_TRACE(what);
            Outputs outputs;
            change(outputs);
            EXPECT_EQ(function.call(outputs, flags), result);
            std::wstring shown = expected;
            if (shown[0] == L'@') {
                shown.replace(0, 1, function.answer);
            }
            if (!function.trusted) {
                shown.replace(shown.rfind(L' ', shown.size() - 2), std::wstring::npos, L" ~~~~~~ ");
            }
            EXPECT_EQ(show(outputs), shown);
        }
    }
    for (const Function& function : functions) {
        Outputs outputs;
        outputs[2] = {.has_buffer = false, .has_length = false};
        // Required: with a trusted pair the certificate's length is never tested.
        EXPECT_EQ(function.call(outputs, 0), function.trusted ? 1 : -2);
        outputs[4].has_length = false;
        EXPECT_EQ(function.call(outputs, 0), -2);
    }
}

TEST_F(FlatFunctionsTest, GiveEmptyTextsOrThrowForMissingEntries) {
    Outputs outputs;
    const auto get = [&](const wchar_t* server) {
        outputs = {};
        return bind(L"", plain, ::get_subsystems_certificate_information, server).call(outputs, 0);
    };
    for (const wchar_t* server : {L"unknown", L"", static_cast<const wchar_t*>(nullptr)}) {
        EXPECT_EQ(get(server), 1);
        EXPECT_EQ(show(outputs), L"000000 000000 000000 000000 ~~~~~~ ");
    }
    outputs = {};
    write_configuration("<ORVACertificates>");
    EXPECT_EQ(functions[2].call(outputs, 2), 0);
    EXPECT_EQ(show(outputs), L"~~~~~~1 ~~~~~~1 ~~~~~~1 ~~~~~~1 ~~~~~~1 ");
    const std::wstring beyond = {static_cast<wchar_t>(0xD800), 0};
    EXPECT_ANY_THROW(get(beyond.c_str()));
    support::remove_all(machine.root());
    support::write_file(machine.root(), "a file where the directory of the keys should be");
    EXPECT_ANY_THROW(functions[0].call(outputs, 0));
}

} // namespace
} // namespace store_test
