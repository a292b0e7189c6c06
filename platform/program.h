#pragma once

#include <string>
#include <vector>

// What a command-line program needs of the system.
namespace platform {

/// Returns the arguments without the program's name: on Windows those of the process in UTF-8, on
/// Linux those of main().
std::vector<std::string> program_arguments(int count, char** words);

/// On Windows makes the standard streams binary and the console UTF-8. On Linux occupies closed
/// standard streams, so that no file takes their place and using them is an error, and makes a
/// write beyond the file size limit an error.
void prepare_standard_streams();

/// Holds back the signals that end or stop the process, as far as possible, while it lives. They
/// take effect afterwards (on Windows Ctrl+C and Ctrl+Break are ignored).
class SignalsHeld {
  public:
    SignalsHeld() noexcept;
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld();

  private:
    unsigned held_ = 0; ///< the signals that were not held before
};

} // namespace platform
