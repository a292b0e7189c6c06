#pragma once

#include <string>
#include <vector>

#include "platform/win32/windows.h"

namespace support {

/// The three standard handles of a new process; they must be inheritable.
struct StandardHandles {
    HANDLE input;
    HANDLE output;
    HANDLE error;
};

/// Starts a program that inherits these and all other inheritable handles, and gives its process
/// handle; null when it cannot start.
HANDLE start(const std::vector<std::string>& words, const StandardHandles& handles);

/// Waits for the end; -1 for a process that was ended from outside or crashed.
int exit_status_of(HANDLE process);

/// What TerminateProcess() is given by ChildProcess::kill().
inline constexpr UINT killed_status = 0xDEAD;

} // namespace support
