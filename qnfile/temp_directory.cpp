#include "platform/process_paths.h"
#include "qnfile/file_utilities.h"
#include "qnfile/path_forms.h"

namespace qnfile {

std::string get_temp_directory() {
    return impl::with_slashes(platform::temporary_directory());
}

} // namespace qnfile
