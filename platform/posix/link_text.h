#pragma once

#include <string>

#include "platform/system_error.h"

namespace platform {

/// Returns the target of a symbolic link.
Result<std::string> text_of_link(const std::string& link);

/// Returns the path of the kernel's link to an open file.
std::string link_of_descriptor(int descriptor);

} // namespace platform
