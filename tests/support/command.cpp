#include "tests/support/command.h"

#include <memory>

#include <gtest/gtest.h>

#include "tests/support/environment_guard.h"
#include "tests/support/launch.h"
#include "tests/support/temporary_directory.h"

namespace support {
namespace {

FileHandle open_stream(const std::string& name, platform::FileAccess access) {
    const auto file = platform::open_file(name, access, platform::FileDisposition::open_always,
                                          platform::FileSharing::read_write, {});
    EXPECT_TRUE(file) << name << ": " << platform::describe(file.error());
    return file ? *file : platform::invalid_file;
}

} // namespace

CommandResult run(const Command& command) {
    const TemporaryDirectory directory; // files, so that neither side ever waits for the other
    write_file(directory.file("in"), command.input);
    // The child takes its variables from this process.
    std::vector<std::unique_ptr<EnvironmentGuard>> variables;
    for (const auto& [name, value] : command.environment) {
        variables.push_back(std::make_unique<EnvironmentGuard>(name, value));
    }
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
