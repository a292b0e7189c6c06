#pragma once

#include <cstdint>
#include <string>

#include "tools/vdcertificates/secret.h"

namespace tool {

/// The source of a password.
enum class PasswordSource : std::uint8_t { none, standard_input, file, prompt };

/// Reads a password. A final line end of a file or of standard input is not part of it. Throws
/// UsageError if the source is empty: a failed program at the other end of a pipe must not erase a
/// password.
Secret read_password(PasswordSource source, const std::string& file);

} // namespace tool
