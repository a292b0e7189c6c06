#include "tests/support/account.h"

namespace support {

bool may_change_account() {
    return false;
}

bool become_nobody() {
    return false;
}

} // namespace support
