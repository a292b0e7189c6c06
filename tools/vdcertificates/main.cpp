#include <array>
#include <cstdlib>
#include <exception>
#include <new>

#include "platform/memory.h"
#include "platform/program.h"
#include "tools/vdcertificates/command_line.h"
#include "tools/vdcertificates/output.h"

namespace {

/// Includes the chain of causes if there is memory for it.
void print_failure(const std::exception& failure) noexcept {
    try {
        tool::print_error(tool::cause_of(failure));
    } catch (...) {
        tool::print_error(failure.what());
    }
}

/// Overwrites what calls have left on the stack: registers saved there by the loader and compilers
/// may hold parts of a password, too.
[[gnu::noinline]] void wipe_stack() noexcept {
    std::array<char, 32768> below;
    platform::secure_zero(below.data(), below.size());
}

tool::ExitStatus run(int count, char** words) noexcept {
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

} // namespace

int main(int count, char** words) {
    const tool::ExitStatus status = run(count, words);
    wipe_stack();
    std::_Exit(status); // other libraries take memory at their end, and crash where there is none
}
