#include "tests/support/child_process.h"

#include <algorithm>
#include <iostream>

#include <gtest/gtest.h>

#include "platform/process_paths.h"
#include "tests/support/temporary_directory.h"

namespace support {
namespace {

FileHandle open_stream(const std::string& name, platform::FileAccess access) {
    return *platform::open_file(name, access, platform::FileDisposition::open_always,
                                platform::FileSharing::read_write, {});
}

} // namespace

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
    std::vector<std::string> words{*platform::application_path(), child_argument, function};
    words.insert(words.end(), arguments.begin(), arguments.end());
    process_ = start(words, {to_child.reader, from_child.writer});
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
    for (char byte = 0; byte != '\n';) {
        const auto count = platform::read_file(output_, &byte, 1);
        if (!count || *count == 0) {
            break;
        }
        line += byte;
    }
    line.erase(std::min(line.find_first_of("\r\n"), line.size())); // Windows ends it by both
    return line;
}

void ChildProcess::tell() {
    EXPECT_TRUE(platform::write_file(input_, "\n", 1));
}

void ChildProcess::kill() {
    kill_process(process_);
}

int ChildProcess::wait() {
    return wait_for_process(std::exchange(process_, platform::invalid_file));
}

CommandResult run(const Command& command) {
    const TemporaryDirectory directory; // files, so that neither side ever waits for the other
    write_file(directory.file("in"), command.input);
    std::vector<std::string> words{command.program};
    words.insert(words.end(), command.arguments.begin(), command.arguments.end());
    const Streams streams{open_stream(directory.file("in"), platform::FileAccess::read),
                          open_stream(directory.file("out"), platform::FileAccess::write),
                          open_stream(directory.file("err"), platform::FileAccess::write)};
    const FileHandle process = start(words, streams);
    for (const FileHandle stream : {streams.input, streams.output, streams.error}) {
        platform::close_file(stream);
    }
    const int status = wait_for_process(process);
    return {status, read_file(directory.file("out")), read_file(directory.file("err"))};
}

} // namespace support
