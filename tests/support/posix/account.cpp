#include "tests/support/account.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace support {

bool may_change_account() {
    return ::geteuid() == 0 && ::getpwnam("nobody") != nullptr;
}

bool become_nobody() {
    const passwd* account = ::getpwnam("nobody");
    return account != nullptr && ::setgroups(0, nullptr) == 0 && ::setgid(account->pw_gid) == 0 &&
           ::setuid(account->pw_uid) == 0;
}

} // namespace support
