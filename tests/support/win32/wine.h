#pragma once

namespace support {

/// True under Wine, which does not show all that Windows does.
bool is_wine();

} // namespace support
