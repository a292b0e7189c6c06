#include <algorithm>

#include "platform/path.h"
#include "platform/process_paths.h"
#include "qnfile/file_utilities.h"

namespace qnfile {

std::string get_temp_directory() {
    std::string directory = platform::temporary_directory();
    std::replace_if(directory.begin(), directory.end(), platform::is_separator, '/');
    return directory;
}

} // namespace qnfile
