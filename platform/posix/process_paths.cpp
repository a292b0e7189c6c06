#include "platform/process_paths.h"

#include <cerrno>
#include <unistd.h>

#include "platform/posix/last_error.h"
#include "platform/posix/link_text.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr std::size_t first_buffer_size = 260;

} // namespace

SystemError set_current_directory(const std::string& path) {
    return error_of(::chdir(path.c_str()));
}

Result<std::string> current_directory(std::size_t& bufferSize) {
    bufferSize = first_buffer_size;
    for (std::string buffer(bufferSize, '\0');; buffer.resize(bufferSize)) {
        PLATFORM_SEAM(current_directory);
        if (::getcwd(buffer.data(), buffer.size()) != nullptr) {
            buffer.resize(buffer.find('\0'));
            return buffer;
        }
        if (errno != ERANGE) {
            return last_error();
        }
        bufferSize *= 2;
    }
}

Result<std::string> runtime_current_directory() {
    std::size_t bufferSize = 0;
    return current_directory(bufferSize);
}

Result<std::string> application_path() {
    PLATFORM_SEAM(application_path);
    return text_of_link("/proc/self/exe");
}

} // namespace platform
