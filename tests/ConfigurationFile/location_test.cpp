#include <cerrno>
#include <filesystem>
#include <functional>
#include <future>

#include "ConfigurationFile/location.h"
#include "platform/machine.h"
#include "platform/path.h"
#include "platform/testing/testing.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/failure.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

namespace fs = std::filesystem;
using support::EnvironmentGuard;
using support::failure_of;
using support::TraceCapture;
using testing::ElementsAre;
using testing::HasSubstr;
using vdcertificates::create_and_get_default_root_configuration_directory;
using Access = vdcertificates::ConfigurationFileAccess;

const std::string path_function =
    "vdcertificates::ConfigurationFile::get_configuration_file_path() ";
const std::string root_function =
    "vdcertificates::create_and_get_default_root_configuration_directory() ";
const std::string mkdir_failure = "error.qncertificates.filesystem.mkdir ";

class LocationTest : public StoreTest {
  protected:
    /// The path of the configuration file if the variable has the value.
    std::string path_with(const std::string& value) {
        const EnvironmentGuard variable("ORVA_Certificates", value);
        return Access::path(file);
    }

    vdcertificates::ConfigurationFile file;
};

TEST_F(LocationTest, TheVariableNamesTheWholePath) {
    const std::string at_root = std::string(1, platform::preferred_separator) + "x.xml";
    // The variable, the path, and whether an empty file exists afterwards.
    const std::tuple<std::string, std::string, bool> cases[] = {
        {machine.file("x.xml"), machine.file("x.xml"), true},
        {machine.file("new/x.xml"), machine.file("new/x.xml"), true},
        {"", machine.default_file(), false},
        // Without anything before the separator the path is not tested.
        {at_root, at_root, false},
        // A plain name becomes a directory, which then cannot be written as a file.
        {"plain.xml", machine.default_file(), false},
    };
    const fs::path before = fs::current_path();
    fs::current_path(machine.directory());
    for (const auto& [value, path, probed] : cases) {
        const TraceCapture capture("VDCertificatesConfigurationFile=41");
        EXPECT_EQ(path_with(value), path);
        EXPECT_EQ(fs::exists(path), probed) << path;
        EXPECT_THAT(capture.text(),
                    HasSubstr(path_function + "configurationFilePath: " + path + "\n"));
    }
    fs::current_path(before);
    EXPECT_TRUE(fs::is_directory(machine.file("plain.xml")));
}

TEST_F(LocationTest, AnUnusableVariableIsAnErrorOrAWarning) {
    const TraceCapture capture("VDCertificatesConfigurationFile=21");
    const std::string message = "Failed to create the directory: " + machine.file("a/b") + ".";
    EXPECT_EQ(failure_of([&] { path_with(machine.file("a/b/x.xml")); }),
              mkdir_failure + path_function + message);
    fs::create_directory(machine.file("x.xml"));
    EXPECT_EQ(path_with(machine.file("x.xml")), machine.default_file());
    EXPECT_THAT(capture.lines(),
                ElementsAre(HasSubstr("Error Message: " + message),
                            HasSubstr(" 21 VDCertificatesConfigurationFile " + path_function +
                                      "Current user has NO access to: " + machine.file("x.xml") +
                                      ", as specified by the environment variable: "
                                      "ORVA_Certificates.")));
}

TEST_F(LocationTest, AnExclusiveOpenerIsWaitedForAndThenReported) {
    const std::string path = machine.file("x.xml");
    const TraceCapture capture("VDCertificatesConfigurationFile=11");
    platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 2);
    EXPECT_EQ(path_with(path), path); // the third attempt succeeds
    EXPECT_EQ(capture.text(), "");

    platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 3);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(failure_of([&] { path_with(path); }),
              "error.qncertificates.filesystem.open.sharing_violation " + path_function +
                  "File: " + path + " has already been opened with EXCLUSIVE access!");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    EXPECT_THAT(capture.lines(),
                ElementsAre(HasSubstr(
                    " vdcertificates::file_has_write_access() Error Message: The file: " + path +
                    " has been opened with EXCLUSIVE access by an EXTERNAL process!")));
}

TEST_F(LocationTest, TheMachinesSettingComesBeforeTheProfile) {
    fs::create_directory(machine.file("set"));
    const std::tuple<std::string, std::string, int> cases[] = {
        // The setting, the root, and how many attempts to write there meet another opener.
        {machine.file("set"), machine.file("set"), 0},
        {machine.file("set/"), machine.file("set"), 2},
        {machine.file("set//"), machine.file("set/"), 0}, // one separator is cut
        {machine.file("absent"), machine.root(), 0},
        {machine.file("set"), machine.root(), 3},
    };
    for (const auto& [setting, root, refusals] : cases) {
        platform::testing::store_machine_root(setting);
        platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), refusals);
        const TraceCapture capture("VDCertificatesConfigurationFile=21");
        EXPECT_EQ(create_and_get_default_root_configuration_directory(), root);
        EXPECT_EQ(capture.text().find(" 21 VDCertificatesConfigurationFile " + root_function +
                                      "Current user has NO access to: " + setting +
                                      ", as specified under the HKEY_LOCAL_MACHINE\\" +
                                      platform::machine_setting_source() + " key.") !=
                      std::string::npos,
                  root == machine.root())
            << capture.text();
        EXPECT_TRUE(root == machine.root() || fs::exists(root + "/TESTHOST_ORVA_Certificates.xml"));
    }
    for (const platform::Call call :
         {platform::Call::machine_setting, platform::Call::computer_name}) {
        platform::testing::fail_next(call, platform::SystemError::posix(EIO));
        EXPECT_THAT(failure_of(create_and_get_default_root_configuration_directory),
                    HasSubstr("error.qncertificates.parameter.invalid"));
    }
}

TEST_F(LocationTest, EachAccessWaitsForTheLock) {
    write_configuration("");
    const vdcertificates::ConfigurationFileNodes none;
    const Access::Document nothing = {&none, &none, &none};
    const std::function<void()> accesses[] = {
        [] { const vdcertificates::ConfigurationFile loads_the_keys; },
        [&] { Access::read(file, Access::devices); },
        [&] { replace(file, nothing); },
        [&] { replace(file, nothing, 1); },
        [&] { path_with(machine.file("x.xml")); },
        [&] {
            platform::testing::store_machine_root(machine.directory());
            create_and_get_default_root_configuration_directory();
        },
    };
    for (const auto& access : accesses) {
        SCOPED_TRACE(&access - accesses);
        const auto mutex = vdcertificates::ConfigurationFileMutex::create();
        mutex->acquire_lock();
        auto waiting = std::async(std::launch::async, access);
        EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
        mutex->release_lock();
        waiting.get();
    }
}

TEST_F(LocationTest, TheProfileIsTheLastResort) {
    const std::string below = machine.file("p/Orvane Systems/Certificates");
    const std::tuple<std::optional<std::string>, std::optional<std::string>, std::string> cases[] =
        {
            // USERPROFILE, HOME and the root.
            {machine.file("p"), machine.file("h"), below},
            {machine.file("p/"), std::nullopt, below},
            {std::nullopt, machine.file("p"), platform::paths_have_drives ? "" : below},
            {std::nullopt, std::nullopt, ""},
        };
    for (const auto& [profile_value, home_value, root] : cases) {
        const EnvironmentGuard profile("USERPROFILE", profile_value);
        const EnvironmentGuard home("HOME", home_value);
        EXPECT_EQ(create_and_get_default_root_configuration_directory(), root);
        EXPECT_TRUE(root.empty() || fs::is_directory(root));
        support::remove_all(machine.file("p"));
    }
    // A failure to create a directory only counts if the last one does not exist then.
    support::write_file(machine.file("file"), "");
    const EnvironmentGuard profile("USERPROFILE", machine.file("file"));
    EXPECT_EQ(failure_of(create_and_get_default_root_configuration_directory),
              mkdir_failure + root_function + "Failed to create the directory: " +
                  machine.file("file/Orvane Systems/Certificates") + ".");
}

TEST_F(LocationTest, TheProbeAsksForWritingAndChangesNothing) {
    using namespace std::string_literals;
    support::write_file(machine.file("present"), "content");
    const std::pair<std::string, bool> cases[] = {
        {"present", true},
        {"absent", true}, // and created
        {"absent/x.xml", false},
        {"none\0x"s, true}, // a name that cannot be probed counts as writable
    };
    for (const auto& [name, writable] : cases) {
        bool sharingViolation = true;
        EXPECT_EQ(vdcertificates::file_has_write_access(machine.file(name), &sharingViolation),
                  writable)
            << name;
        EXPECT_FALSE(sharingViolation);
    }
    bool ignored = false;
    platform::testing::fail_next(platform::Call::access, platform::SystemError::posix(EACCES));
    EXPECT_FALSE(vdcertificates::file_has_write_access(machine.file("present\0x"s), &ignored));
    EXPECT_EQ(support::read_file(machine.file("present")), "content");
    EXPECT_FALSE(fs::exists(machine.file("none")));
}

} // namespace
} // namespace store_test
