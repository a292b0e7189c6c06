#include "platform/posix/link_text.h"

#include <climits>
#include <unistd.h>

#include "platform/posix/last_error.h"

namespace platform {

Result<std::string> text_of_link(const std::string& link) {
    std::string text(PATH_MAX, '\0');
    const ssize_t length = ::readlink(link.c_str(), text.data(), text.size());
    if (length < 0) {
        return last_error();
    }
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::string link_of_descriptor(int descriptor) {
    return "/proc/self/fd/" + std::to_string(descriptor);
}

} // namespace platform
