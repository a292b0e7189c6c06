#include <filesystem>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/child_process.h"

namespace store_test {
namespace {

namespace fs = std::filesystem;
using support::ChildProcess;
using vdcertificates::ConfigurationFile;

using PosixSharingTest = StoreTest;

constexpr gid_t group_of_the_suite = 65533;

/// As the account of the first number, sets that server's entry and reads those of all numbers.
CHILD_PROCESS(work_as_account) {
    const auto account = static_cast<uid_t>(std::stoul(arguments.at(1)));
    if (::setgroups(0, nullptr) != 0 || ::setgid(group_of_the_suite) != 0 ||
        ::setuid(account) != 0) {
        return 1;
    }
    ::umask(022);
    Machine::enter(arguments[0]);
    ConfigurationFile file;
    if (!file.set_webconfig_certificate_information(arguments[1], "p", "k", "c",
                                                    "of " + arguments[1])) {
        return 2;
    }
    for (std::size_t i = 1; i < arguments.size(); ++i) {
        std::string password;
        std::string other;
        if (!file.get_webconfig_certificate_information(arguments[i], other, other, other,
                                                        password) ||
            password != "of " + arguments[i]) {
            return 3;
        }
    }
    return 0;
}

TEST_F(PosixSharingTest, TwoAccountsOfAGroupWorkOnOneFileAndOnePairOfKeys) {
    if (!support::may_change_account()) {
        GTEST_SKIP() << "only root can become another account";
    }
    fs::create_directories(machine.root());
    for (fs::path path = machine.root(); path != machine.directory(); path = path.parent_path()) {
        ASSERT_EQ(::chmod(path.parent_path().c_str(), 0755), 0);
    }
    ASSERT_EQ(::chown(machine.root().c_str(), ::geteuid(), group_of_the_suite), 0);
    ASSERT_EQ(::chmod(machine.root().c_str(), 02770), 0);
    const auto work = [&](std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), machine.directory());
        return ChildProcess("work_as_account", arguments).wait();
    };
    EXPECT_EQ(work({"65531"}), 0);
    const std::string key = support::read_file(machine.private_key_file());
    EXPECT_EQ(work({"65532", "65531"}), 0);
    EXPECT_EQ(work({"65531", "65532"}), 0);
    EXPECT_EQ(support::read_file(machine.private_key_file()), key);
    // An account other than root must make the files writable to replace them.
    support::write_file(machine.public_key_file(), "junk");
    EXPECT_EQ(work({"65531"}), 0);
    EXPECT_NE(support::read_file(machine.private_key_file()), key);
}

} // namespace
} // namespace store_test
