#pragma once

#include <string>
#include <vector>

#include "platform/file.h"

// What each system does with processes.
namespace support {

using platform::FileHandle;

/// The standard streams of a new process.
struct Streams {
    FileHandle input;
    FileHandle output;
    FileHandle error = platform::invalid_file; ///< if invalid, that of this process
};

/// Starts the program `words[0]` with these streams and, on Linux, whatever else is inheritable.
/// Returns the process; fails the test and returns invalid_file if it does not start.
FileHandle start(std::vector<std::string> words, const Streams& streams);

/// Ends a process at once; none of its own code runs.
void kill_process(FileHandle process);

/// Waits for the end and returns the exit status; -1 for a process that was ended from outside,
/// crashed, or never started.
int wait_for_process(FileHandle process);

/// Two ends of a pipe that no child inherits unless start() is given one.
struct Pipe {
    FileHandle reader;
    FileHandle writer;
};
Pipe make_pipe();

/// Windows: true under Wine, which does not show all that Windows does.
bool is_wine();

/// Linux: true if this process can turn into another account.
bool may_change_account();

/// Linux: turns this process into an account that owns nothing, for good.
bool become_nobody();

} // namespace support
