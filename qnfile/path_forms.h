#pragma once

#include <string>

namespace qnfile::impl {

/// Replaces each of the system's separators by `/`.
std::string with_slashes(std::string path);

/// Removes the first byte of `/x:/` on a system with drives. Required: any byte may precede the
/// colon.
std::string without_slash_before_drive(std::string path);

} // namespace qnfile::impl
