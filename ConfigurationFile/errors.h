#pragma once

#include "qncore/error_code.h"

namespace vdcertificates::error {

/// Another process holds the configuration file open exclusively.
extern const qncore::ErrorCode sharing_violation;

} // namespace vdcertificates::error
