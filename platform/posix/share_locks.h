#pragma once

#include "platform/file.h"

namespace platform {

/// Enters an open file into the table of openers that all processes share, or refuses when it and
/// another opener exclude each other. The entry goes with the descriptor, thus with the process.
/// Where the file system has no locks every opener is let in.
SystemError take_share_locks(int descriptor, FileAccess access, FileSharing sharing);

} // namespace platform
