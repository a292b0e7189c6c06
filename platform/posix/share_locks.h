#pragma once

#include "platform/file.h"

namespace platform {

/// Registers an opener of a file with all processes. Fails with sharing_violation() if it and
/// another opener exclude each other, and with the error of a failed lock call. The registration
/// ends with the open file description. Devices, which many programs share, and file systems
/// without locks admit every opener.
SystemError take_share_locks(int descriptor, FileAccess access, FileSharing sharing);

/// Ends the registration, also if a child made by fork() keeps the description open.
void release_share_locks(int descriptor) noexcept;

} // namespace platform
