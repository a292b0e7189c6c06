#include <map>

#include <gmock/gmock.h>

#include "platform/program.h"
#include "tests/support/child_process.h"

namespace support {
namespace {

std::map<std::string, ChildFunction>& functions() {
    static std::map<std::string, ChildFunction> registered;
    return registered;
}

} // namespace

bool register_child(const char* name, ChildFunction function) {
    return functions().emplace(name, function).second;
}

} // namespace support

int main(int argc, char** argv) {
    const std::vector<std::string> arguments = platform::program_arguments(argc, argv);
    if (arguments.size() >= 2 && arguments[0] == support::child_argument) {
        return support::functions().at(arguments[1])({arguments.begin() + 2, arguments.end()});
    }
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
