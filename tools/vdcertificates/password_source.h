#pragma once

#include <cstdint>
#include <string>

#include "tools/vdcertificates/secret.h"

namespace tool {

/// Where a password comes from.
enum class PasswordSource : std::uint8_t { none, standard_input, file, prompt };

/// Reads a password. One line end at the end of a file or of standard
/// input does not belong to it. Throws UsageError when the source yields nothing: a failed program
/// at the other end of a pipe must not erase a password.
Secret read_password(PasswordSource source, const std::string& file);

} // namespace tool
