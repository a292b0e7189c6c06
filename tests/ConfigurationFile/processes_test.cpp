#include <filesystem>
#include <memory>

#include "ConfigurationFile/configuration_file_access.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/child_process.h"

namespace store_test {
namespace {

namespace fs = std::filesystem;
using support::ChildProcess;
using vdcertificates::ConfigurationFile;

class ProcessesTest : public StoreTest {
  protected:
    std::unique_ptr<ChildProcess> start(const char* function,
                                        std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), machine.directory());
        return std::make_unique<ChildProcess>(function, arguments);
    }

    /// Contents and rights of the key files that are there.
    std::string key_files() const {
        std::string state;
        for (const std::string& file : {machine.public_key_file(), machine.private_key_file()}) {
            if (fs::exists(file)) {
                state += support::read_file(file) +
                         std::to_string(static_cast<int>(fs::status(file).permissions()));
            }
        }
        return state;
    }
};

CHILD_PROCESS(construct) {
    Machine::enter(arguments[0]);
    support::say("ready");
    support::wait_to_be_told();
    const ConfigurationFile file;
    return 0;
}

TEST_F(ProcessesTest, TwoOnAFreshMachineMakeOnePair) {
    for (int round = 0; round < 3; ++round) {
        support::remove_all(machine.root());
        const auto first = start("construct");
        const auto second = start("construct");
        first->wait_for("ready");
        second->wait_for("ready");
        first->tell();
        second->tell();
        EXPECT_EQ(first->wait(), 0);
        EXPECT_EQ(second->wait(), 0);
        const std::string key = support::read_file(machine.private_key_file());
        ConfigurationFile file;
        EXPECT_TRUE(file.set_cluster_certificate_information("p", "k", "c", "secret"));
        EXPECT_EQ(support::read_file(machine.private_key_file()), key);
    }
}

constexpr int writers = 8;
constexpr int entries_each = 50;

CHILD_PROCESS(write_entries) {
    Machine::enter(arguments[0]);
    ConfigurationFile file;
    for (int i = 0; i < entries_each; ++i) {
        const std::string server = "S" + arguments[1] + "-" + std::to_string(i);
        if (!file.set_devices_certificate_information(server, "p", "k", "c", "", "t")) {
            support::say("a set failed");
            return 1;
        }
        vdcertificates::ConfigurationFileNodes nodes;
        // Whoever reads, at whatever moment, gets a well-formed file.
        if (!file.get_additional_certificate_information(nodes)) {
            support::say("a read failed");
            return 1;
        }
    }
    return 0;
}

TEST_F(ProcessesTest, EightWritersAtOnceDisturbNoReader) {
    ConfigurationFile file;
    ASSERT_TRUE(file.set_cluster_certificate_information("p", "k", "c", "secret"));
    std::vector<std::unique_ptr<ChildProcess>> children;
    children.reserve(writers);
    for (int i = 0; i < writers; ++i) {
        children.push_back(start("write_entries", {std::to_string(i)}));
    }
    for (const auto& child : children) {
        std::string password;
        std::string other;
        EXPECT_TRUE(file.get_cluster_certificate_information(other, other, other, password));
        EXPECT_EQ(password, "secret");
        EXPECT_EQ(child->next_line(), "");
        EXPECT_EQ(child->wait(), 0);
    }
    // A change is not atomic as a whole, so some entries may have been overwritten; the last
    // writer's is there.
    const auto nodes = vdcertificates::ConfigurationFileAccess::read(
        file, vdcertificates::ConfigurationFileAccess::devices);
    EXPECT_FALSE(nodes.notifiers.empty());
    for (const auto& [server, entries] : nodes.notifiers) {
        ASSERT_EQ(entries.size(), 1U) << server;
        EXPECT_EQ(show(entries[0]), "SIPDevice(p,k,c,,t)") << server;
    }
}

CHILD_PROCESS(construct_as_nobody) {
    if (!support::become_nobody()) {
        return 1;
    }
    Machine::enter(arguments[0]);
    try {
        const ConfigurationFile file;
        support::say("constructed");
    } catch (const std::exception& exception) {
        support::say(exception.what());
    }
    return 0;
}

TEST_F(ProcessesTest, AnAccountThatMayNotReadTheKeysChangesNeitherFile) {
    if (!support::may_change_account()) {
        GTEST_SKIP() << "only root can become another account";
    }
    { const ConfigurationFile makes_the_keys; }
    const std::string expected = "Caught exception when loading keys for configuration file "
                                 "usage. machinePublicKey: " +
                                 machine.public_key_file() +
                                 ", machinePrivateKey: " + machine.private_key_file() + ".";
    // Even where that account may create and remove files beside them.
    for (fs::path path = machine.root(); path != machine.directory(); path = path.parent_path()) {
        fs::permissions(path, fs::perms::all);
    }
    fs::permissions(machine.directory(), fs::perms::all);
    const auto owner = fs::perms::owner_read;
    const auto reading = owner | fs::perms::others_read;
    const auto writing = reading | fs::perms::others_write;
    const auto gone = fs::perms::none;
    const std::pair<fs::perms, fs::perms> cases[] = {// modes of the public and the private key
                                                     {owner, owner},   {owner, writing},
                                                     {reading, owner}, {writing, owner},
                                                     {gone, owner},    {gone, reading}};
    for (const auto& [public_mode, private_mode] : cases) {
        if (public_mode == gone) {
            fs::remove(machine.public_key_file());
        } else {
            fs::permissions(machine.public_key_file(), public_mode);
        }
        fs::permissions(machine.private_key_file(), private_mode);
        const std::string state = key_files();
        const auto child = start("construct_as_nobody");
        EXPECT_EQ(child->next_line(), expected);
        EXPECT_EQ(child->wait(), 0);
        EXPECT_EQ(key_files(), state);
    }
}

} // namespace
} // namespace store_test
