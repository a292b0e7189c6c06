#include "tests/support/environment_guard.h"

#include <cstdlib>

#include "platform/win32/wide.h"

namespace support {

void set_variable(const std::string& name, const std::optional<std::string>& value) {
    // An empty value removes a variable from the C runtime.
    ::_wputenv_s(platform::wide(name).c_str(), platform::wide(value.value_or("")).c_str());
}

} // namespace support
