#include <exception>
#include <new>

#include "platform/program.h"
#include "tools/vdcertificates/command_line.h"
#include "tools/vdcertificates/output.h"

namespace {

/// With the chain of causes where memory allows it.
void print_failure(const std::exception& failure) noexcept {
    try {
        tool::print_error(tool::cause_of(failure));
    } catch (...) {
        tool::print_error(failure.what());
    }
}

} // namespace

int main(int count, char** words) {
    using namespace tool;
    try {
        platform::prepare_standard_streams();
        return run_command_line(platform::program_arguments(count, words));
    } catch (const UsageError& error) {
        print_error(error.what());
        return status_usage;
    } catch (const std::bad_alloc&) {
        print_error("out of memory");
    } catch (const std::exception& error) {
        print_failure(error);
    } catch (...) {
        print_error("unknown failure");
    }
    return status_failed;
}
