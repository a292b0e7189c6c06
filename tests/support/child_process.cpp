#include "tests/support/child_process.h"

#include <iostream>
#include <map>

#include <gtest/gtest.h>

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

ChildProcess::ChildProcess(const std::string& function, const std::vector<std::string>& arguments) {
    const Pipe to_child = make_pipe();
    const Pipe from_child = make_pipe();
    std::vector<std::string> words{own_program(), child_argument, function};
    words.insert(words.end(), arguments.begin(), arguments.end());
    process_ = start(words, {to_child.reader, from_child.writer, own_error_stream()});
    platform::close_file(to_child.reader);
    platform::close_file(from_child.writer);
    input_ = to_child.writer;
    output_ = from_child.reader;
}

ChildProcess::~ChildProcess() {
    if (process_ != platform::invalid_file) {
        kill();
        wait();
    }
    platform::close_file(input_);
    platform::close_file(output_);
}

void ChildProcess::wait_for(const std::string& line) {
    for (std::string got = next_line(); got != line; got = next_line()) {
        if (got.empty()) {
            FAIL() << "the child ended without saying " << line;
        }
    }
}

std::string ChildProcess::next_line() {
    std::string line;
    for (char byte = 0; read_byte(output_, byte) && byte != '\n';) {
        if (byte != '\r') { // the end of a line on Windows has one
            line += byte;
        }
    }
    return line;
}

void ChildProcess::tell() {
    EXPECT_TRUE(write_byte(input_, '\n'));
}

void ChildProcess::kill() {
    kill_process(process_);
}

int ChildProcess::wait() {
    return wait_for_process(std::exchange(process_, platform::invalid_file));
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
