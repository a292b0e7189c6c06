#include "tests/tools/program_fixture.h"

#include "platform/machine.h"
#include "platform/path.h"
#include "platform/process_paths.h"
#include "platform/testing/testing.h"

namespace tools_test {

std::string program_file() {
    const std::string own = *platform::application_path();
    return own.substr(0, own.rfind(platform::preferred_separator) + 1) + PROGRAM_NAME;
}

Words operator+(Words words, const Words& more) {
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

ProgramTest::ProgramTest() {
    const std::map<std::string, std::optional<std::string>> variables{
        {"ORVA_ISOLATED_MACHINE", machine.str()},
        {"ORVA_FAILING_ALLOCATION", std::nullopt},
        {"ORVA_Certificates", std::nullopt},
        {"USERPROFILE", machine.file("home")},
        {"HOME", std::nullopt},
        {"TMPDIR", machine.file("tmp")},
        {"TMP", machine.file("tmp")},
        {"QNTRACE", std::nullopt},
        {"QNTRACE_FILE", std::nullopt}};
    for (const auto& [name, value] : variables) {
        environment_.emplace_back(name, value);
    }
    platform::testing::set_machine_setting(platform::testing::machine_setting_of(machine.str()));
    std::filesystem::create_directories(root());
    std::filesystem::create_directory(machine.file("tmp"));
    place_keys();
}

// One pair serves all tests of the process: making one takes as long as all else.
void ProgramTest::place_keys() {
    static std::map<std::string, std::string> keys;
    if (keys.empty()) {
        run({"list"});
    }
    for (const char* file : key_files) {
        if (!keys.contains(file)) {
            keys[file] = support::read_file(in_root(file));
        } else {
            support::write_file(in_root(file), keys[file]);
            std::filesystem::permissions(in_root(file), std::filesystem::perms::owner_read);
        }
    }
}

void ProgramTest::remove_keys() {
    for (const char* file : key_files) {
        support::remove_all(in_root(file));
    }
}

ProgramTest::~ProgramTest() {
    EXPECT_TRUE(std::filesystem::is_empty(machine.file("tmp"))) << "a file was left behind";
    platform::testing::store_machine_root(std::nullopt);
    platform::testing::set_mutex_name_suffix("-" + machine.path().filename().string());
    platform::testing::remove_named_mutex("Global\\{2780CEA8-95DE-41D1-955F-C2A000BD437A}");
}

support::CommandResult ProgramTest::run(const Words& arguments, const std::string& input) {
    return support::run({program_file(), arguments, input});
}

std::string ProgramTest::done(const Words& arguments, const std::string& input) {
    const support::CommandResult result = run(arguments, input);
    EXPECT_EQ(result.status, 0) << result.errors << testing::PrintToString(arguments);
    EXPECT_EQ(result.errors, "");
    return result.output;
}

void ProgramTest::refused(int status, const Words& arguments, const std::string& text,
                          const std::string& input) {
    const support::CommandResult result = run(arguments, input);
    EXPECT_EQ(result.status, status) << testing::PrintToString(arguments);
    EXPECT_EQ(result.output, "");
    EXPECT_THAT(result.errors, testing::HasSubstr(text));
}

Words ProgramTest::set_words(const std::string& role, const std::string& prefix) {
    Words words{"set",           role,
                "--public-key",  prefix + ".pub",
                "--private-key", prefix + ".key",
                "--certificate", prefix + ".crt"};
    return role == "cluster" ? words : words + Words{"--server", "SRV01"};
}

std::string ProgramTest::in_root(const std::string& suffix) const {
    return root() + platform::preferred_separator + *platform::computer_name() + suffix;
}

} // namespace tools_test
