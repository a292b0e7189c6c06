#include <cerrno>
#include <filesystem>
#include <functional>
#include <future>

#include "ConfigurationFile/errors.h"
#include "ConfigurationFile/location.h"
#include "platform/file.h"
#include "platform/machine.h"
#include "platform/path.h"
#include "platform/testing/testing.h"
#include "qncertificates/errors.h"
#include "tests/ConfigurationFile/store_fixture.h"
#include "tests/support/failure.h"
#include "tests/support/trace_capture.h"

namespace store_test {
namespace {

namespace fs = std::filesystem;
using support::EnvironmentGuard;
using support::failure_of;
using support::TraceCapture;
using testing::HasSubstr;
using vdcertificates::ConfigurationFile;
using vdcertificates::ConfigurationFileAccess;
using vdcertificates::create_and_get_default_root_configuration_directory;

using LocationTest = StoreTest;

const char* const topic = "VDCertificatesConfigurationFile=41";
const std::string mkdir_code(qncertificates::error::qncertificates_filesystem_mkdir.path());
const char* const path_function =
    " vdcertificates::ConfigurationFile::get_configuration_file_path() ";

TEST_F(LocationTest, TheVariableNamesTheWholePath) {
    struct Case {
        std::string value;
        std::string path;
        bool probed; ///< an empty file exists afterwards
    };
    const Case cases[] = {
        {machine.file("x.xml"), machine.file("x.xml"), true},
        {machine.file("new/x.xml"), machine.file("new/x.xml"), true},
        {machine.file("new//y.xml"), machine.file("new//y.xml"), true},
        {"", machine.default_file(), false},
    };
    ConfigurationFile file;
    for (const Case& test : cases) {
        const EnvironmentGuard variable("ORVA_Certificates", test.value);
        const TraceCapture capture(topic);
        EXPECT_EQ(ConfigurationFileAccess::path(file), test.path);
        EXPECT_EQ(fs::exists(test.path), test.probed) << test.path;
        EXPECT_THAT(capture.text(), HasSubstr(" 41 VDCertificatesConfigurationFile vdcertificates::"
                                              "ConfigurationFile::get_configuration_file_path() "
                                              "configurationFilePath: " +
                                              test.path + "\n"));
    }
    // With nothing before the separator the value is taken untested.
    const std::string at_root = std::string(1, platform::preferred_separator) + "x.xml";
    const EnvironmentGuard variable("ORVA_Certificates", at_root);
    EXPECT_EQ(ConfigurationFileAccess::path(file), at_root);
    EXPECT_FALSE(fs::exists(at_root));
}

TEST_F(LocationTest, APlainNameStandsForADirectoryAndAFileAtOnce) {
    ConfigurationFile file;
    const EnvironmentGuard variable("ORVA_Certificates", "plain.xml");
    const fs::path before = fs::current_path();
    fs::current_path(machine.directory());
    const std::string path = ConfigurationFileAccess::path(file);
    fs::current_path(before);
    // The directory of that name is made, and then cannot be written as a file.
    EXPECT_EQ(path, machine.default_file());
    EXPECT_TRUE(fs::is_directory(machine.file("plain.xml")));
}

TEST_F(LocationTest, ADirectoryThatCannotBeMadeIsAnError) {
    ConfigurationFile file;
    const EnvironmentGuard variable("ORVA_Certificates", machine.file("a/b/x.xml"));
    const TraceCapture capture("VDCertificatesConfigurationFile=11");
    const std::string message = "Failed to create the directory: " + machine.file("a/b") + ".";
    EXPECT_EQ(failure_of([&] { ConfigurationFileAccess::path(file); }),
              mkdir_code + path_function + message);
    EXPECT_THAT(capture.text(), HasSubstr("Error Message: " + message));
}

TEST_F(LocationTest, AFileThatMayNotBeWrittenFallsBackWithAWarning) {
    ConfigurationFile file;
    fs::create_directory(machine.file("x.xml"));
    const EnvironmentGuard variable("ORVA_Certificates", machine.file("x.xml"));
    const TraceCapture capture("VDCertificatesConfigurationFile=21");
    EXPECT_EQ(ConfigurationFileAccess::path(file), machine.default_file());
    EXPECT_THAT(capture.lines(),
                testing::ElementsAre(HasSubstr(
                    " 21 VDCertificatesConfigurationFile vdcertificates::ConfigurationFile::"
                    "get_configuration_file_path() Current user has NO access to: " +
                    machine.file("x.xml") +
                    ", as specified by the environment variable: ORVA_Certificates.")));
}

TEST_F(LocationTest, AnExclusiveOpenerIsWaitedForAndThenReported) {
    const std::string path = machine.file("x.xml");
    ConfigurationFile file;
    const EnvironmentGuard variable("ORVA_Certificates", path);
    const TraceCapture capture("VDCertificatesConfigurationFile=11");
    platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 2);
    EXPECT_EQ(ConfigurationFileAccess::path(file), path); // the third attempt succeeds
    EXPECT_EQ(capture.text(), "");

    const auto holder = platform::open_file(path, platform::FileAccess::write,
                                            platform::FileDisposition::open_always,
                                            platform::FileSharing::none, {});
    ASSERT_TRUE(holder);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(failure_of([&] { ConfigurationFileAccess::path(file); }),
              std::string(vdcertificates::error::sharing_violation.path()) + path_function +
                  "File: " + path + " has already been opened with EXCLUSIVE access!");
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));
    EXPECT_THAT(capture.lines(),
                testing::ElementsAre(HasSubstr(
                    " vdcertificates::file_has_write_access() Error Message: The file: " + path +
                    " has been opened with EXCLUSIVE access by an EXTERNAL process!")));
    platform::close_file(*holder);
    EXPECT_EQ(ConfigurationFileAccess::path(file), path);
}

TEST_F(LocationTest, TheMachinesSettingComesBeforeTheProfile) {
    struct Case {
        const char* what;
        std::string setting;
        std::string root;
    };
    fs::create_directory(machine.file("set"));
    const Case cases[] = {
        {"as it stands", machine.file("set"), machine.file("set")},
        {"one separator is cut", machine.file("set/"), machine.file("set")},
        {"only one", machine.file("set//"), machine.file("set/")},
        {"no access", machine.file("absent"), machine.root()},
    };
    for (const Case& test : cases) {
        machine.set_machine_root(test.setting);
        const TraceCapture capture("VDCertificatesConfigurationFile=21");
        EXPECT_EQ(create_and_get_default_root_configuration_directory(), test.root) << test.what;
        if (test.root == machine.root()) {
            EXPECT_THAT(capture.lines(),
                        testing::ElementsAre(HasSubstr(
                            " vdcertificates::create_and_get_default_root_configuration_directory"
                            "() Current user has NO access to: " +
                            test.setting + ", as specified under the HKEY_LOCAL_MACHINE\\" +
                            platform::machine_setting_source() + " key.")));
        } else {
            EXPECT_EQ(capture.text(), "");
            EXPECT_TRUE(fs::exists(test.root + "/TESTHOST_ORVA_Certificates.xml"));
        }
    }
}

TEST_F(LocationTest, ASharingViolationUnderTheSettingIsOnlyAWarning) {
    fs::create_directory(machine.file("set"));
    machine.set_machine_root(machine.file("set"));
    platform::testing::fail_next(platform::Call::open, platform::sharing_violation(), 3);
    EXPECT_EQ(create_and_get_default_root_configuration_directory(), machine.root());
    EXPECT_EQ(create_and_get_default_root_configuration_directory(), machine.file("set"));
}

TEST_F(LocationTest, ASettingThatCannotBeReadAndAMissingNameAreErrors) {
    for (const platform::Call call :
         {platform::Call::machine_setting, platform::Call::computer_name}) {
        machine.set_machine_root(machine.directory());
        platform::testing::fail_next(call, platform::SystemError::posix(EIO));
        EXPECT_THAT(failure_of(create_and_get_default_root_configuration_directory),
                    HasSubstr("error.qncertificates.parameter.invalid"));
    }
}

TEST_F(LocationTest, EachProbeWaitsForTheLock) {
    ConfigurationFile file;
    const EnvironmentGuard variable("ORVA_Certificates", machine.file("x.xml"));
    machine.set_machine_root(machine.directory());
    const std::function<std::string()> probes[] = {
        [&] { return ConfigurationFileAccess::path(file); },
        create_and_get_default_root_configuration_directory,
    };
    for (const auto& probe : probes) {
        const auto mutex = vdcertificates::ConfigurationFileMutex::create();
        mutex->acquire_lock();
        auto waiting = std::async(std::launch::async, probe);
        EXPECT_EQ(waiting.wait_for(std::chrono::milliseconds(30)), std::future_status::timeout);
        mutex->release_lock();
        EXPECT_NE(waiting.get(), "");
    }
}

TEST_F(LocationTest, TheProfileIsTheLastResort) {
    struct Case {
        std::optional<std::string> profile;
        std::optional<std::string> home;
        std::string root;
    };
    const Case cases[] = {
        {machine.file("p"), machine.file("h"), machine.file("p/Orvane Systems/Certificates")},
        {machine.file("p/"), std::nullopt, machine.file("p/Orvane Systems/Certificates")},
        {std::nullopt, machine.file("h"),
         platform::paths_have_drives ? "" : machine.file("h/Orvane Systems/Certificates")},
        {std::nullopt, std::nullopt, ""},
    };
    for (const Case& test : cases) {
        const EnvironmentGuard profile("USERPROFILE", test.profile);
        const EnvironmentGuard home("HOME", test.home);
        EXPECT_EQ(create_and_get_default_root_configuration_directory(), test.root);
        EXPECT_TRUE(test.root.empty() || fs::is_directory(test.root));
    }
    // Whatever cannot be made on the way only counts if the last directory does not exist then.
    support::write_file(machine.file("file"), "");
    const EnvironmentGuard profile("USERPROFILE", machine.file("file"));
    EXPECT_EQ(failure_of(create_and_get_default_root_configuration_directory),
              mkdir_code +
                  " vdcertificates::create_and_get_default_root_configuration_directory() Failed "
                  "to create the directory: " +
                  machine.file("file/Orvane Systems/Certificates") + ".");
}

TEST_F(LocationTest, TheProbeAsksForWritingAndChangesNothing) {
    using namespace std::string_literals;
    support::write_file(machine.file("present"), "content");
    const std::pair<std::string, bool> cases[] = {
        {"present", true},
        {"absent", true}, // and made
        {"absent/x.xml", false},
        // A name that cannot be probed counts as writable.
        {"none\0x"s, true},
        {"present\0x"s, true},
    };
    for (const auto& [name, writable] : cases) {
        bool sharingViolation = true;
        EXPECT_EQ(vdcertificates::file_has_write_access(machine.file(name), &sharingViolation),
                  writable)
            << name;
        EXPECT_FALSE(sharingViolation);
    }
    EXPECT_EQ(support::read_file(machine.file("present")), "content");
    EXPECT_FALSE(fs::exists(machine.file("none")));
}

} // namespace
} // namespace store_test
