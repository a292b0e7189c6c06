#include "qnfile/path_forms.h"

#include <algorithm>

#include "platform/path.h"

namespace qnfile::impl {

std::string with_slashes(std::string path) {
    std::replace_if(path.begin(), path.end(), platform::is_separator, '/');
    return path;
}

std::string without_slash_before_drive(std::string path) {
    const bool has_drive = platform::paths_have_drives && path.size() >= 4 && path[0] == '/' &&
                           path[2] == ':' && path[3] == '/';
    path.erase(0, has_drive ? 1 : 0);
    return path;
}

} // namespace qnfile::impl
