#pragma once

#include <string>

#include "tools/vdcertificates/secret.h"

namespace tool {

/// Reads standard input or a file of any kind, including a pipe, to its end or to `limit` bytes,
/// and only into memory that is wiped. Throws UsageError if it cannot be read.
Secret read_standard_input(std::size_t limit);
Secret read_file(const std::string& path, std::size_t limit);

} // namespace tool
