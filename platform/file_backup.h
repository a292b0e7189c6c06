#pragma once

#include <string>
#include <string_view>

#include "platform/system_error.h"

// Files that appear under their name as a whole or not at all: written beside the target, flushed
// to the device, and renamed over it in one step. A failure leaves the target unchanged and no
// other file.
namespace platform {

/// The path with all links resolved. is_not_found() if it does not exist.
Result<std::string> real_path(const std::string& path);

/// Copies a file with its permissions and, if this account may set them, its owner and group. A
/// copy that cannot get the group has only the owner's permissions.
SystemError copy_whole(const std::string& source, const std::string& target);

/// Writes a file that only its owner may open (Linux: mode 0600; Windows: also administrators).
SystemError write_whole(const std::string& target, std::string_view content);

/// Renames a file and replaces one that has the new name.
SystemError rename_over(const std::string& source, const std::string& target);

} // namespace platform
