#pragma once

#include <string>

namespace vdcertificates {

/// True when this process may write the file; the probe creates a missing one, empty. A file that
/// another process holds exclusively for all of three attempts in 60 ms sets `sharingViolation`.
bool file_has_write_access(const std::string& path, bool* sharingViolation);

} // namespace vdcertificates
