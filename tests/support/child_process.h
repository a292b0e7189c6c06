#pragma once

#include <string>
#include <vector>

#include "platform/file.h"

// A test program starts itself again to get a second process. What the second one does is a
// function registered under a name:
//
//     CHILD_PROCESS(hold_lock) { ...; support::say("held"); support::wait_to_be_told(); return 0; }
//     support::ChildProcess child("hold_lock", {"argument"});
//     child.wait_for("held"); child.tell(); EXPECT_EQ(child.wait(), 0);
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

using ChildFunction = int (*)(const std::vector<std::string>& arguments);

bool register_child(const char* name, ChildFunction function);

/// In the child: writes one line to the parent, or waits for one from it.
void say(const std::string& line);
void wait_to_be_told();

class ChildProcess {
  public:
    ChildProcess(const std::string& function, const std::vector<std::string>& arguments);
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    /// Kills a child that is still running.
    ~ChildProcess();

    /// Reads lines from the child until one is `line`; fails the test if there is none.
    void wait_for(const std::string& line);
    /// Reads the next line; empty at the end.
    std::string next_line();
    void tell();
    /// Ends the child at once; none of its own code runs.
    void kill();
    /// Waits for the child's end and returns its exit status; -1 if it was killed.
    int wait();

  private:
    FileHandle process_ = platform::invalid_file;
    FileHandle input_ = platform::invalid_file;  ///< writes to the child's standard input
    FileHandle output_ = platform::invalid_file; ///< reads the child's standard output
};

/// Another program to run to its end. It inherits the variables of this process.
struct Command {
    std::string program;
    std::vector<std::string> arguments = {};
    std::string input = {}; ///< its standard input, which ends there
};

struct CommandResult {
    int status = -1; ///< -1 if a signal ended it
    std::string output;
    std::string errors;
};

/// Runs it to its end; fails the test if it cannot start.
CommandResult run(const Command& command);

/// First argument of a test program that runs a child function; the second one is its name.
inline constexpr const char* child_argument = "--run-child";

} // namespace support

#define CHILD_PROCESS(name)                                                                        \
    static int childProcess_##name(const std::vector<std::string>& arguments);                     \
    static const bool childRegistered_##name =                                                     \
        support::register_child(#name, childProcess_##name);                                       \
    static int childProcess_##name([[maybe_unused]] const std::vector<std::string>& arguments)
