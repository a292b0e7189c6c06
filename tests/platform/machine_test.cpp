#include "platform/machine.h"

#include <cerrno>

#include <gmock/gmock.h>

#include "platform/name_service.h"
#include "platform/testing/testing.h"

namespace platform {
namespace {

TEST(MachineTest, ComputerName) {
    EXPECT_NE(*computer_name(), "");
    testing::set_computer_name("OTHER");
    EXPECT_EQ(*computer_name(), "OTHER");
    testing::set_computer_name("");
    testing::fail_call(1, sharing_violation());
    EXPECT_EQ(computer_name().error(), sharing_violation());
    EXPECT_TRUE(computer_name()) << "no more than once";
    testing::fail_call(2, sharing_violation());
    EXPECT_TRUE(computer_name());
    EXPECT_FALSE(machine_root_directory());
    EXPECT_EQ(testing::calls_made(), 2);
}

TEST(MachineTest, ErrorsKnowWhatTheyMean) {
    EXPECT_FALSE(SystemError());
    EXPECT_TRUE(sharing_violation().is_sharing_violation());
    EXPECT_TRUE(SystemError::windows(5).is_access_denied());
    EXPECT_TRUE(SystemError::posix(EACCES).is_access_denied());
    EXPECT_TRUE(SystemError::posix(ENOTDIR).is_not_found());
    EXPECT_FALSE(SystemError::windows(ENOENT + 100).is_not_found());
    EXPECT_NE(describe(SystemError::posix(ENOENT)), describe(SystemError::posix(EACCES)));
    EXPECT_NE(describe(SystemError::windows(2)), describe(SystemError::windows(5)));
}

TEST(MachineTest, AddressesAndOtherTexts) {
    const std::tuple<const char*, AddressFamily, bool> cases[] = {
        {"127.0.0.1", AddressFamily::ipv4, true},   {"::1", AddressFamily::ipv6, true},
        {"::1", AddressFamily::ipv4, false},        {"127.0.0.1", AddressFamily::ipv6, false},
        {"srv01.test", AddressFamily::ipv4, false}, {"", AddressFamily::ipv4, false},
    };
    EXPECT_EQ(start_name_service(), 0);
    for (const auto& [text, family, is_address] : cases) {
        SCOPED_TRACE(text);
        const HostName host = host_name_of_address(text, family);
        EXPECT_EQ(host.is_address, is_address);
        EXPECT_EQ(host.error, 0);
        EXPECT_EQ(!host.name.empty(), is_address);
    }
    EXPECT_EQ(stop_name_service(), 0);
}

} // namespace
} // namespace platform
