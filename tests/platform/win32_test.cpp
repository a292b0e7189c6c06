#include "platform/environment.h"
#include "platform/file_system.h"
#include "platform/key_file.h"
#include "platform/machine.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
#include "tests/platform/platform_fixture.h"
#include "tests/support/environment_guard.h"

namespace platform {
namespace {

class WindowsFileTest : public FileTest {};

TEST_F(WindowsFileTest, InvalidUtf8IsNotFound) {
    for (const char* name : {"\xFF", "a\xC3", "\xED\xA0\x80"}) {
        EXPECT_TRUE(probe_write_access(name).is_not_found()) << name;
        EXPECT_TRUE(check_existence(name).is_not_found()) << name;
    }
}

TEST_F(WindowsFileTest, TheReadOnlyBitOfKeyFiles) {
    const auto is_read_only = [&] {
        return (::GetFileAttributesW(wide(name_).c_str()) & FILE_ATTRIBUTE_READONLY) != 0;
    };
    EXPECT_TRUE(set_key_file_writable(missing_, true).is_not_found());
    for (const bool writable : {false, true, false}) {
        ASSERT_FALSE(set_key_file_writable(name_, writable));
        EXPECT_EQ(is_read_only(), !writable);
    }
    if (support::is_wine()) {
        GTEST_SKIP() << "Wine lets root write to it";
    }
    EXPECT_TRUE(OpenFile(open_key_file(name_)).error().is_access_denied());
}

TEST_F(WindowsFileTest, TheProbeDoesNotShareDeletion) {
    const HANDLE deleter = ::CreateFileW(wide(missing_).c_str(), DELETE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                         nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(deleter, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(probe_write_access(missing_).is_sharing_violation());
    EXPECT_TRUE((Opener{FileAccess::write, FileSharing::none}).open(missing_)) << "it shares it";
    ::CloseHandle(deleter);
}

TEST_F(WindowsFileTest, ATransferOfAnOverlappedHandleIsWaitedFor) {
    const OpenFile file(open_file(name_, FileAccess::read, FileDisposition::open_existing,
                                  FileSharing::read_write, {.overlapped = true}));
    ASSERT_TRUE(file);
    char text[8] = {};
    EXPECT_EQ(*read_file_at(file.get(), 3, text, 7), 4U);
    EXPECT_STREQ(text, "tent");
    EXPECT_EQ(read_file_at(file.get(), 7, text, 7).error(), SystemError::windows(ERROR_HANDLE_EOF));
}

constexpr const char* key_emoji = "C:\\\xC3\xBC\xF0\x9F\x94\x91"; // an umlaut, and a surrogate pair

TEST(WindowsMachineTest, TheComputersName) {
    EXPECT_EQ(*computer_name(), environment_text("COMPUTERNAME"));
    EXPECT_EQ(machine_setting_source(), "SOFTWARE\\Orvane Systems\\Certificates");
}

TEST_F(WindowsFileTest, TheRegistrysPathLosesItsLastUnit) {
    // what, the value with all its units, the root directory
    const std::tuple<const char*, std::wstring, std::string> cases[] = {
        {"with its closing zero", std::wstring(L"C:\\x\0", 5), "C:\\x"},
        {"separator at the end", std::wstring(L"C:\\x\\\0", 6), "C:\\x\\"},
        {"no zero: the last unit goes", L"C:\\xy", "C:\\x"},
        {"nothing but the zero", std::wstring(L"\0", 1), ""},
        {"no unit at all", L"", ""},
        {"beyond ASCII", wide(key_emoji) + std::wstring(1, L'\0'), key_emoji},
    };
    testing::set_machine_setting(testing::machine_setting_of(directory_.str()));
    EXPECT_EQ(*machine_root_directory(), std::nullopt) << "no key";
    for (const auto& [what, stored, root] : cases) {
        ASSERT_EQ(::RegSetKeyValueW(HKEY_CURRENT_USER, wide(machine_setting_source()).c_str(),
                                    L"Path", REG_BINARY, stored.data(),
                                    static_cast<DWORD>(stored.size() * sizeof(wchar_t))),
                  ERROR_SUCCESS);
        EXPECT_EQ(*machine_root_directory(), root) << what;
    }
    ::RegDeleteKeyValueW(HKEY_CURRENT_USER, wide(machine_setting_source()).c_str(), L"Path");
    EXPECT_EQ(*machine_root_directory(), std::nullopt) << "a key without the value";
    testing::store_machine_root(std::nullopt);
    testing::set_machine_setting("");
}

TEST(WindowsMachineTest, TextIsUtf8OutsideAndUtf16Inside) {
    EXPECT_EQ(wide(key_emoji), L"C:\\\xFC\xD83D\xDD11");
    for (const std::string& value : {std::string(key_emoji), std::string(5000, 'x')}) {
        const support::EnvironmentGuard guard("ORVA_TEST", value);
        EXPECT_EQ(environment_text("ORVA_TEST"), value);
    }
    EXPECT_EQ(environment_text("ORVA_TEST"), std::nullopt);
}

} // namespace
} // namespace platform
