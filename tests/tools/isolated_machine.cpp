#include <filesystem>

#include "platform/environment.h"
#include "platform/testing/testing.h"
#include "tests/support/allocations.h"

// Linked into a second binary of the program, which lives on a machine of its own: the directory
// that ORVA_ISOLATED_MACHINE names. It touches neither the real machine's mutex nor its setting.
// ORVA_FAILING_ALLOCATION numbers the `new` from which on all fail.
namespace {

const bool g_isolated = [] {
    const auto directory = platform::environment_variable("ORVA_ISOLATED_MACHINE");
    if (!directory) {
        return false;
    }
    const std::filesystem::path path(*directory);
    platform::testing::set_machine_setting(platform::testing::machine_setting_of(*directory));
    platform::testing::set_mutex_name_suffix("-" + path.filename().string());
    if (const auto number = platform::environment_variable("ORVA_FAILING_ALLOCATION")) {
        support::fail_allocations(std::stoul(*number), support::Failing::from_there_on);
    }
    return true;
}();

} // namespace
