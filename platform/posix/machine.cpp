#include "platform/machine.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <string_view>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/opening.h"
#include "platform/posix/retry.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr const char* configuration_file = "/etc/orvane-systems/certificates.conf";
constexpr std::string_view path_key = "Path=";

Result<std::string> content_of(const std::string& path) {
    const Result<int> opened = open_admissible(path, O_RDONLY);
    if (!opened) {
        return opened.error();
    }
    const Descriptor file(*opened);
    std::string content;
    std::array<char, 4096> block{};
    ssize_t count = 0;
    while ((count = retry([&] { return ::read(file.get(), block.data(), block.size()); })) > 0) {
        content.append(block.data(), static_cast<std::size_t>(count));
    }
    return count == 0 ? Result<std::string>(std::move(content)) : last_error();
}

/// The rest of the first line that begins with the key.
std::optional<std::string> path_in(std::string_view content) {
    while (!content.empty()) {
        std::string_view line = content.substr(0, content.find('\n'));
        content.remove_prefix(std::min(line.size() + 1, content.size()));
        if (line.starts_with(path_key)) {
            line.remove_suffix(line.ends_with('\r') ? 1 : 0);
            return std::string(line.substr(path_key.size()));
        }
    }
    return std::nullopt;
}

} // namespace

Result<std::string> computer_name() {
    PLATFORM_SEAM(computer_name);
    if (!seams().computer_name.empty()) {
        return seams().computer_name;
    }
    std::array<char, 257> name{};
    if (::gethostname(name.data(), name.size() - 1) != 0) {
        return last_error();
    }
    return name.front() != '\0' ? Result<std::string>(name.data()) : SystemError::posix(ENODATA);
}

std::string machine_setting_source() {
    return seams().machine_setting.empty() ? configuration_file : seams().machine_setting;
}

Result<std::optional<std::string>> machine_root_directory() {
    PLATFORM_SEAM(machine_setting);
    const Result<std::string> content = content_of(machine_setting_source());
    if (!content && !content.error().is_not_found()) {
        return content.error();
    }
    return content ? path_in(*content) : std::nullopt;
}

} // namespace platform
