#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <thread>

#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/child_process.h"

namespace store_test {
namespace {

using support::ChildProcess;
using vdcertificates::ConfigurationFile;

using PosixSharingTest = StoreTest;

CHILD_PROCESS(hold_flock) {
    const int file = ::open(arguments.at(0).c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0 || ::flock(file, LOCK_EX) != 0) {
        return 1;
    }
    support::say("held");
    std::this_thread::sleep_for(std::chrono::seconds(2));
    return 0;
}

TEST_F(PosixSharingTest, AStrangersLockOfAKeyFileCostsNoKeys) {
    { const ConfigurationFile makes_the_keys; }
    const std::string files[] = {machine.public_key_file(), machine.private_key_file()};
    const std::string keys[] = {support::read_file(files[0]), support::read_file(files[1])};
    ChildProcess stranger("hold_flock", {files[0]});
    stranger.wait_for("held");
    try {
        const ConfigurationFile waits_for_the_stranger;
    } catch (const std::exception& exception) {
        EXPECT_EQ(exception.what(), "Caught exception when loading keys for configuration file "
                                    "usage. machinePublicKey: " +
                                        files[0] + ", machinePrivateKey: " + files[1] + ".");
    }
    EXPECT_EQ(stranger.wait(), 0);
    EXPECT_EQ(support::read_file(files[0]), keys[0]);
    EXPECT_EQ(support::read_file(files[1]), keys[1]);
}

} // namespace
} // namespace store_test
