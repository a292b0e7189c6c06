#include "tests/support/child_process.h"

#include <cstdio>
#include <iostream>
#include <map>

#include "tests/support/process.h"

namespace support {
namespace {

std::map<std::string, ChildFunction>& functions() {
    static std::map<std::string, ChildFunction> registered;
    return registered;
}

} // namespace

ChildRegistration::ChildRegistration(const char* name, ChildFunction function) {
    functions()[name] = function;
}

void say(const std::string& line) {
    std::cout << line << std::endl;
}

void wait_to_be_told() {
    std::string line;
    std::getline(std::cin, line);
}

int run_child(const std::string& function, const std::vector<std::string>& arguments) {
    const auto found = functions().find(function);
    if (found == functions().end()) {
        std::cerr << "no child function " << function << '\n';
        return 127;
    }
    try {
        return found->second(arguments);
    } catch (const std::exception& exception) {
        std::cerr << function << ": " << exception.what() << '\n';
        return 126;
    }
}

} // namespace support
