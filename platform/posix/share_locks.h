#pragma once

#include "platform/file.h"

namespace platform {

/// Enters an open file into the table of openers that all processes share. Refuses it with
/// sharing_violation() if it and another opener exclude each other; a lock call that fails is its
/// own error. The entry lives as long as the open file description. Devices, which others use for
/// reasons of their own, and file systems without locks admit every opener.
SystemError take_share_locks(int descriptor, FileAccess access, FileSharing sharing);

/// Removes the entry, also where a child made by fork() keeps the description open.
void release_share_locks(int descriptor) noexcept;

} // namespace platform
