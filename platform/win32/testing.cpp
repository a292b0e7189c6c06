#include "platform/testing/testing.h"

#include <cstdlib>

#include "platform/machine.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform::testing {

void set_environment_variable(const char* name, const std::optional<std::string>& value) {
    // Sets the variable of the process and both copies of the C runtime.
    ::_wputenv_s(wide(name).c_str(), wide(value.value_or("")).c_str());
}

void remove_named_mutex(const std::string&) {
    // The system removes a mutex with its last handle.
}

void store_machine_root(const std::optional<std::string>& root) {
    const std::wstring key = wide(seams().machine_setting);
    if (!root) {
        ::RegDeleteTreeW(HKEY_CURRENT_USER, key.c_str());
        return;
    }
    const std::wstring value = wide(*root);
    ::RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), L"Path", REG_SZ, value.c_str(),
                      static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
}

std::string machine_setting_of(const std::string& directory) {
    return "Software\\Orvane Systems\\Tests\\" +
           directory.substr(directory.find_last_of("\\/") + 1);
}

} // namespace platform::testing
