#pragma once

#include "qncore/error_code.h"

namespace vdcertificates::error {

/// Another process holds the configuration file open exclusively.
inline constinit const qncore::ErrorCode sharing_violation{
    "error.qncertificates.filesystem.open.sharing_violation"};

} // namespace vdcertificates::error
