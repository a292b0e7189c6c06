#include "tests/support/account.h"

#include "platform/win32/windows.h"
#include "tests/support/win32/wine.h"

namespace support {

bool may_change_account() {
    return false;
}

bool is_wine() {
    return ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
}

bool become_nobody() {
    return false;
}

} // namespace support
