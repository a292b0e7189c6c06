#include "platform/machine.h"

#include <array>
#include <fstream>
#include <string_view>
#include <unistd.h>

#include "platform/seams.h"

namespace platform {
namespace {

constexpr const char* configuration_file = "/etc/orvane-systems/certificates.conf";
constexpr std::string_view path_key = "Path=";

} // namespace

std::string computer_name() {
    if (!seams().computer_name.empty()) {
        return seams().computer_name;
    }
    std::array<char, 257> name{};
    ::gethostname(name.data(), name.size() - 1);
    return name.data();
}

std::string machine_setting_source() {
    return seams().machine_setting.empty() ? configuration_file : seams().machine_setting;
}

std::optional<std::string> machine_root_directory() {
    std::ifstream file(machine_setting_source(), std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        if (line.starts_with(path_key)) {
            if (line.ends_with('\r')) {
                line.pop_back();
            }
            return line.substr(path_key.size());
        }
    }
    return std::nullopt;
}

} // namespace platform
