#include <gmock/gmock.h>

#include "platform/environment.h"
#include "platform/machine.h"
#include "platform/name_service.h"
#include "platform/testing/testing.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
#include "tests/support/environment_guard.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

constexpr const char* key_emoji = "C:\\\xC3\xBC\xF0\x9F\x94\x91"; // an umlaut, and a surrogate pair

TEST(WindowsMachineTest, TheComputersName) {
    EXPECT_EQ(*computer_name(), environment_text("COMPUTERNAME"));
    EXPECT_EQ(machine_setting_source(), "SOFTWARE\\Orvane Systems\\Certificates");
}

TEST(WindowsMachineTest, TheRegistrysPathLosesItsLastUnit) {
    struct Case {
        const char* what;
        std::wstring stored; ///< with all units that the registry holds
        std::string root;
    };
    const Case cases[] = {
        {"with its closing zero", std::wstring(L"C:\\x\0", 5), "C:\\x"},
        {"separator at the end", std::wstring(L"C:\\x\\\0", 6), "C:\\x\\"},
        {"no zero: the last unit goes", L"C:\\xy", "C:\\x"},
        {"nothing but the zero", std::wstring(L"\0", 1), ""},
        {"no unit at all", L"", ""},
        {"beyond ASCII", wide(key_emoji) + std::wstring(1, L'\0'), key_emoji},
    };
    const support::TemporaryDirectory directory;
    testing::set_machine_setting(testing::machine_setting_of(directory.str()));
    EXPECT_EQ(*machine_root_directory(), std::nullopt) << "no key";
    for (const Case& c : cases) {
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, wide(machine_setting_source()).c_str(),
                                    L"Path", REG_BINARY, c.stored.data(),
                                    static_cast<DWORD>(c.stored.size() * sizeof(wchar_t))),
                  ERROR_SUCCESS);
        EXPECT_EQ(*machine_root_directory(), c.root) << c.what;
    }
    ::RegDeleteKeyValueW(HKEY_CURRENT_USER, wide(machine_setting_source()).c_str(), L"Path");
    EXPECT_EQ(*machine_root_directory(), std::nullopt) << "a key without the value";
    testing::store_machine_root(std::nullopt);
    testing::set_machine_setting("");
}

TEST(WindowsMachineTest, VariablesAreBytesOrText) {
    const support::EnvironmentGuard guard("ORVA_TEST", key_emoji);
    EXPECT_EQ(environment_text("ORVA_TEST"), key_emoji);
    EXPECT_EQ(environment_text("ORVA_TEST_UNSET"), std::nullopt);
    const std::string long_value(5000, 'x');
    set_environment_variable("ORVA_TEST", long_value);
    EXPECT_EQ(environment_text("ORVA_TEST"), long_value);
    EXPECT_EQ(environment_variable("ORVA_TEST"), long_value);
}

} // namespace
} // namespace platform
