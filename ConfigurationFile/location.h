#pragma once

#include <string>

namespace vdcertificates {

/// Returns true if this process may write the file; creates a missing one, empty. Sets
/// `sharingViolation` if another process holds the file exclusively during three attempts in 60 ms.
bool file_has_write_access(const std::string& path, bool* sharingViolation);

} // namespace vdcertificates
