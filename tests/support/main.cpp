#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "platform/program.h"
#include "tests/support/child_process.h"

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = platform::program_arguments(argc, argv);
    if (arguments.size() >= 2 && arguments[0] == support::child_argument) {
        return support::run_child(arguments[1], {arguments.begin() + 2, arguments.end()});
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
