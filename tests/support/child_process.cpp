#include "tests/support/child_process.h"

#include <cstdio>
#include <iostream>
#include <map>

#include <gtest/gtest.h>

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

void ChildProcess::wait_for(const std::string& line) {
    for (std::string got = next_line(); got != line; got = next_line()) {
        if (got.empty()) {
            FAIL() << "the child ended without saying " << line;
        }
    }
}

std::string read_line(std::FILE* stream) {
    std::string line;
    for (int c = std::fgetc(stream); c != EOF && c != '\n'; c = std::fgetc(stream)) {
        if (c != '\r') { // the end of a line on Windows has one
            line += static_cast<char>(c);
        }
    }
    return line;
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
