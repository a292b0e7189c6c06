#include "platform/program.h"

namespace platform {

std::vector<std::string> program_arguments(int count, char** words) {
    return {words + 1, words + count};
}

void prepare_standard_streams() {
    // They carry bytes already.
}

} // namespace platform
