#include "platform/machine.h"

#include <cerrno>
#include <sys/stat.h>

#include <gmock/gmock.h>

#include "platform/testing/testing.h"
#include "tests/support/temporary_directory.h"

namespace platform {
namespace {

TEST(PosixMachineTest, TheMachinesSetting) {
    const std::pair<const char*, std::optional<std::string>> cases[] = {
        {"", std::nullopt},
        {"Path=/srv/certificates\n", "/srv/certificates"},
        {"Path=/no/line/end", "/no/line/end"},
        {"# Path=/no\n\nother=1\nPath=/first\nPath=/second\n", "/first"},
        {"Path=/from/dos\r\nx\r\n", "/from/dos"},
        {"Path= /a b=c# \n", " /a b=c# "},
        {"Path=\n", ""},
        {" Path=/a\npath=/b\nPath =/c\n", std::nullopt},
    };
    const support::TemporaryDirectory directory;
    const std::string name = directory.file("certificates.conf");
    EXPECT_EQ(machine_setting_source(), "/etc/orvane-systems/certificates.conf");
    testing::set_machine_setting(name);
    EXPECT_EQ(machine_setting_source(), name);
    EXPECT_EQ(*machine_root_directory(), std::nullopt) << "no such file";
    for (const auto& [content, path] : cases) {
        support::write_file(name, content);
        EXPECT_EQ(*machine_root_directory(), path) << content;
    }
    testing::set_machine_setting(name + "/below");
    EXPECT_EQ(*machine_root_directory(), std::nullopt) << "no such directory";
    testing::set_machine_setting(directory.str());
    EXPECT_EQ(machine_root_directory().error(), SystemError::posix(EISDIR));
    ASSERT_EQ(::mkfifo(directory.file("pipe").c_str(), 0666), 0);
    testing::set_machine_setting(directory.file("pipe"));
    EXPECT_EQ(machine_root_directory().error(), SystemError::posix(EINVAL));
    testing::set_machine_setting("");
}

} // namespace
} // namespace platform
