#include "ConfigurationFile/configuration_file.h"
#include "platform/environment.h"
#include "platform/file_system.h"
#include "platform/machine.h"
#include "platform/path.h"
#include "tools/vdcertificates/commands.h"
#include "tools/vdcertificates/key_files.h"
#include "tools/vdcertificates/open_store.h"

namespace tool {
namespace {

using vdcertificates::ConfigurationFile;

std::string presence(const std::string& path) {
    return platform::exists(path) ? path : path + " (not there yet)";
}

/// Which rule gave the root directory.
std::string root_rule(const std::string& root) {
    const auto machine = platform::machine_root_directory();
    std::string setting = machine ? machine->value_or("") : "";
    if (setting.ends_with(platform::preferred_separator)) {
        setting.pop_back();
    }
    if (root.empty()) {
        return "neither the machine's setting nor a user's profile names a directory";
    }
    return root == setting ? "the machine's setting in " + platform::machine_setting_source()
                           : "the user's profile";
}

} // namespace

ExitStatus run_where() {
    OpenStore store;
    const std::string path = store.path();
    const KeyFiles keys = key_files();
    const std::string& variable = ConfigurationFile::sm_configurationFilePathEnvironmentVariable;
    const bool by_variable =
        !path.empty() && platform::environment_variable(variable.c_str()) == path;
    std::vector<Line> lines{
        {"file", presence(path)},
        {"file chosen by",
         by_variable ? "the environment variable " + variable : "the directory of the keys"},
        {"public key", presence(keys.public_key)},
        {"private key", presence(keys.private_key)},
        {"keys chosen by", root_rule(keys.directory)},
    };
    for (const std::string& warning : store.trace().warnings()) {
        lines.emplace_back("warning", warning);
    }
    print_lines(lines);
    return status_done;
}

} // namespace tool
