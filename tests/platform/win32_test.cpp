#include <gmock/gmock.h>

#include "platform/environment.h"
#include "platform/file.h"
#include "platform/file_system.h"
#include "platform/key_file.h"
#include "platform/machine.h"
#include "platform/testing/testing.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
#include "tests/support/environment_guard.h"
#include "tests/support/launch.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

class WindowsFileTest : public ::testing::Test {
  protected:
    bool is_read_only(const std::string& file) const {
        return (::GetFileAttributesW(wide(file).c_str()) & FILE_ATTRIBUTE_READONLY) != 0;
    }

    support::TemporaryDirectory directory;
};

TEST_F(WindowsFileTest, ANameThatOnlySurrogatesSpell) {
    const std::string name = directory.file("\xF0\x9F\x94\x91.xml");
    ASSERT_FALSE(probe_write_access(name));
    WIN32_FIND_DATAW data = {};
    const HANDLE search = ::FindFirstFileW(wide(directory.file("*.xml")).c_str(), &data);
    ASSERT_NE(search, INVALID_HANDLE_VALUE);
    EXPECT_EQ(std::wstring(data.cFileName), L"\xD83D\xDD11.xml");
    EXPECT_EQ(narrow(data.cFileName), "\xF0\x9F\x94\x91.xml");
    ::FindClose(search);
}

TEST_F(WindowsFileTest, InvalidUtf8IsNotFound) {
    for (const char* name : {"\xFF", "a\xC3", "\xED\xA0\x80"}) {
        EXPECT_TRUE(probe_write_access(name).is_not_found()) << name;
        EXPECT_TRUE(check_existence(name).is_not_found()) << name;
    }
}

TEST_F(WindowsFileTest, TheReadOnlyBitOfKeyFiles) {
    const std::string name = directory.file("key");
    const auto file = open_key_file(name);
    ASSERT_TRUE(file);
    EXPECT_TRUE(open_key_file(name).error().is_sharing_violation());
    close_file(*file);
    ASSERT_FALSE(set_key_file_writable(name, false));
    EXPECT_TRUE(is_read_only(name));
    if (const auto opened = open_key_file(name); opened && support::is_wine()) {
        close_file(*opened);
        GTEST_SKIP() << "Wine lets root open a read-only file for writing";
    } else {
        EXPECT_TRUE(opened.error().is_access_denied());
    }
    ASSERT_FALSE(set_key_file_writable(name, true));
    EXPECT_FALSE(is_read_only(name));
    EXPECT_TRUE(set_key_file_writable(directory.file("nowhere"), true).is_not_found());
}

TEST_F(WindowsFileTest, TheProbeDoesNotShareDeletion) {
    const std::string name = directory.file("file");
    const HANDLE deleter = ::CreateFileW(wide(name).c_str(), DELETE,
                                         FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                         nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(deleter, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(probe_write_access(name).is_sharing_violation());
    const auto stream =
        open_file(name, FileAccess::write, FileDisposition::open_existing, FileSharing::none, {});
    EXPECT_TRUE(stream) << "an open of the library's own shares it";
    close_file(*stream);
    ::CloseHandle(deleter);
}

TEST_F(WindowsFileTest, ATransferOfAnOverlappedHandleIsWaitedFor) {
    const std::string name = directory.file("file");
    support::write_file(name, "content");
    const auto file = open_file(name, FileAccess::read, FileDisposition::open_existing,
                                FileSharing::read_write, {.overlapped = true});
    ASSERT_TRUE(file);
    char text[8] = {};
    EXPECT_EQ(*read_file_at(*file, 3, text, 7), 4U);
    EXPECT_STREQ(text, "tent");
    EXPECT_EQ(read_file_at(*file, 7, text, 7).error(), SystemError::windows(ERROR_HANDLE_EOF));
    close_file(*file);
}

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
