#pragma once

#include <string>

#include "tools/vdcertificates/secret.h"

namespace tool {

/// Reads standard input, or a file of any kind (a pipe, too), to its end or to `limit` bytes, into
/// memory that is wiped and through no other. Throws UsageError when it cannot be read.
Secret read_standard_input(std::size_t limit);
Secret read_file(const std::string& path, std::size_t limit);

} // namespace tool
