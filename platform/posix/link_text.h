#pragma once

#include <string>

#include "platform/system_error.h"

namespace platform {

/// Where a symbolic link points.
Result<std::string> text_of_link(const std::string& link);

/// The link by which the kernel tells the path of an open file.
std::string link_of_descriptor(int descriptor);

} // namespace platform
