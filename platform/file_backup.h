#pragma once

#include <string>
#include <string_view>

#include "platform/system_error.h"

// Files that appear under their name as a whole or not at all: written beside the target, brought
// to the device, and renamed over it in one step. What fails leaves the target as it was and no
// other file.
namespace platform {

/// The path with all links resolved. is_not_found() when nothing is there.
Result<std::string> real_path(const std::string& path);

/// Copies a file with its permissions and, as far as this account may give them, its owner and
/// group. A copy that cannot get the group has no permissions but the owner's.
SystemError copy_whole(const std::string& source, const std::string& target);

/// Writes a file that only its owner may open (Linux: mode 0600; Windows: also administrators).
SystemError write_whole(const std::string& target, std::string_view content);

/// Renames a file, in place of one that has the new name.
SystemError rename_over(const std::string& source, const std::string& target);

} // namespace platform
