#pragma once

#include <string>
#include <vector>

// What a program of ours asks the system for.
namespace platform {

/// The words after the program's name: on Windows the UTF-8 of the whole command line, whatever
/// main() was given; on Linux what main() was given.
std::vector<std::string> program_arguments(int count, char** words);

/// Makes the standard streams carry bytes as they are; a console on Windows shows UTF-8. On Linux
/// takes the places of closed standard streams, so that no file gets there and using the stream is
/// an error, and makes a write beyond the limit of a file's size an error, too.
void prepare_standard_streams();

/// While it lives, no signal that the process can hold back ends or stops it. What arrived takes
/// effect afterwards (on Windows Ctrl+C and Ctrl+Break are ignored).
class SignalsHeld {
  public:
    SignalsHeld() noexcept;
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld();

  private:
    unsigned held_ = 0; ///< which ones were not held before
};

} // namespace platform
