#include "platform/testing/testing.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/posix/lock_file.h"

namespace platform::testing {

void set_environment_variable(const char* name, const std::optional<std::string>& value) {
    if (value) {
        ::setenv(name, value->c_str(), 1);
    } else {
        ::unsetenv(name);
    }
}

void remove_named_mutex(const std::string& name) {
    std::filesystem::remove(*lock_file_path(name));
}

std::string machine_setting_of(const std::string& directory) {
    return directory + "/machine.conf";
}

void store_machine_root(const std::optional<std::string>& root) {
    if (!root) {
        std::filesystem::remove(seams().machine_setting);
        return;
    }
    std::ofstream(seams().machine_setting) << "Path=" << *root << '\n';
}

} // namespace platform::testing
