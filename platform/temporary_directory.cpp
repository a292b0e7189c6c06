#include <ace/Lib_Find.h>

#include "platform/process_paths.h"

namespace platform {

std::string temporary_directory() {
    constexpr std::size_t size = 32766;
    std::string directory(size, '\0');
    ACE::get_temp_dir(directory.data(), size - 1); // leaves an empty text if it fails
    directory.back() = '\0';
    directory.resize(directory.find('\0'));
    return directory;
}

} // namespace platform
