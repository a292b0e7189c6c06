#include "platform/testing/testing.h"

#include <filesystem>
#include <fstream>
#include <sys/mman.h>

#include "platform/posix/mutex_object.h"

namespace platform::testing {

void remove_named_mutex(const std::string& name) {
    ::shm_unlink(mutex_object_name(name).c_str());
}

std::string machine_setting_of(const std::string& directory) {
    return directory + "/machine.conf";
}

void store_machine_root(const std::optional<std::string>& root) {
    if (!root) {
        std::filesystem::remove(seams().machine_setting);
        return;
    }
    std::ofstream(seams().machine_setting) << "Path=" << *root << '\n';
}

} // namespace platform::testing
