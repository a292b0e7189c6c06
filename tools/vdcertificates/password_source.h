#pragma once

#include <cstdint>
#include <string>

#include "tools/vdcertificates/secret.h"

namespace tool {

/// Where `set` takes the password from.
enum class PasswordSource : std::uint8_t { none, standard_input, file, prompt };

/// The password, checked; empty without a source. One line end at the end of a file or of
/// standard input does not belong to it. Throws UsageError when it cannot be had.
Secret read_password(PasswordSource source, const std::string& file);

} // namespace tool
