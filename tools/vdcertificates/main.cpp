#include <exception>

#include "platform/program.h"
#include "tools/vdcertificates/commands.h"

namespace {

using namespace tool;

ExitStatus run(CommandLine& line) {
    switch (line.command) {
    case Command::set:
        return run_set(line);
    case Command::get:
        return run_get(line);
    case Command::list:
        return run_list(line);
    case Command::where:
        return run_where();
    case Command::check:
        return run_check();
    case Command::help:
        break;
    }
    print_and_wipe(line.help);
    return status_done;
}

} // namespace

int main(int count, char** words) {
    try {
        platform::prepare_standard_streams();
        CommandLine line = parse_command_line(platform::program_arguments(count, words));
        return run(line);
    } catch (const UsageError& error) {
        print_error(error.what());
        return status_usage;
    } catch (const std::exception& error) {
        print_error(error.what());
        return status_failed;
    }
}
