#pragma once

namespace support {

/// True when this process can turn into another account.
bool may_change_account();

/// Turns this process into an account that owns nothing, for good.
bool become_nobody();

} // namespace support
