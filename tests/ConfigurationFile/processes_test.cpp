#include <filesystem>
#include <memory>
#include <thread>

#include "ConfigurationFile/configuration_file_access.h"
#include "ConfigurationFile/errors.h"
#include "platform/file.h"
#include "qncore/error_exception.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/account.h"
#include "tests/support/child_process.h"
#include "tests/support/trace_capture.h"

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
        fs::remove_all(machine.root());
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

/// Opens a file for itself alone; closes it after some milliseconds, or with 0 when told.
CHILD_PROCESS(hold_file) {
    const auto file = platform::open_file(arguments[1], platform::FileAccess::read,
                                          platform::FileDisposition::open_existing,
                                          platform::FileSharing::none, {});
    support::say(file ? "held" : "refused");
    if (const int time = std::stoi(arguments[2]); time != 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(time));
    } else {
        support::wait_to_be_told();
    }
    platform::close_file(*file);
    return 0;
}

TEST_F(ProcessesTest, AFileThatAnotherProcessHoldsIsWaitedForAWhile) {
    using Access = vdcertificates::ConfigurationFileAccess;
    const std::string path = machine.file("x.xml");
    const support::EnvironmentGuard variable("ORVA_Certificates", path);
    ConfigurationFile file;
    vdcertificates::ConfigurationFileNodes nodes;
    nodes.notifiers["NEW"].push_back(entry("E", "p"));
    const auto change = [&](const Access::Section& section) {
        try {
            (file.*section.write)(nodes);
            return true;
        } catch (const qncore::ErrorException& exception) {
            EXPECT_TRUE(exception.matches(vdcertificates::error::sharing_violation));
            return false;
        }
    };
    for (const auto* section : {&Access::notifiers, &Access::devices, &Access::media_retrieval}) {
        SCOPED_TRACE(section->name);
        const std::string before = document("", "", "");
        support::write_file(path, before);
        const support::TraceCapture capture("VDCertificatesConfigurationFile=11");
        const auto holder = start("hold_file", {path, "0"});
        holder->wait_for("held");
        EXPECT_FALSE(change(*section));
        holder->tell();
        EXPECT_EQ(holder->wait(), 0);
        EXPECT_EQ(support::read_file(path), before);
        // Required: the media retrieval section alone goes on, and fails where it would write.
        EXPECT_EQ(capture.text().find("NOT performing") == std::string::npos,
                  section == &Access::media_retrieval);
        // A busy machine may make a short hold a long one, but not each time.
        bool changed = false;
        for (int attempt = 0; attempt < 20 && !changed; ++attempt) {
            const auto brief = start("hold_file", {path, "15"});
            brief->wait_for("held");
            changed = change(*section);
            EXPECT_EQ(brief->wait(), 0);
        }
        EXPECT_TRUE(changed);
        EXPECT_THAT(support::read_file(path), testing::HasSubstr("NEW"));
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
    for (const char* what : {"both files", "public key alone"}) {
        const std::string state = key_files();
        const auto child = start("construct_as_nobody");
        EXPECT_EQ(child->next_line(), expected) << what;
        EXPECT_EQ(child->wait(), 0);
        EXPECT_EQ(key_files(), state) << what;
        fs::remove(machine.private_key_file());
    }
}

} // namespace
} // namespace store_test
