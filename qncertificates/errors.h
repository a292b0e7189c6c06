#pragma once

#include "qncore/error_code.h"

// The codes of this layer.
namespace qncertificates::error {

extern const qncore::ErrorCode qncertificates;
extern const qncore::ErrorCode qncertificates_filesystem;
extern const qncore::ErrorCode qncertificates_filesystem_mkdir;
extern const qncore::ErrorCode qncertificates_parameter;
extern const qncore::ErrorCode qncertificates_parameter_invalid;

} // namespace qncertificates::error
