#pragma once

#include <string>
#include <vector>

// What a program of ours asks the system for before anything else.
namespace platform {

/// The words behind the program's name: on Windows the UTF-8 of the whole command line, whatever
/// main() was given; on Linux what main() was given.
std::vector<std::string> program_arguments(int count, char** words);

/// Makes the standard streams carry bytes as they are; a console on Windows shows UTF-8.
void prepare_standard_streams();

} // namespace platform
