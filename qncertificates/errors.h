#pragma once

#include "qncore/error_code.h"

// The codes of this layer.
namespace qncertificates::error {

using qncore::ErrorCode;

inline constinit const ErrorCode qncertificates{"error.qncertificates"};
inline constinit const ErrorCode qncertificates_filesystem{"error.qncertificates.filesystem"};
inline constinit const ErrorCode qncertificates_filesystem_mkdir{
    "error.qncertificates.filesystem.mkdir"};
inline constinit const ErrorCode qncertificates_filesystem_open{
    "error.qncertificates.filesystem.open"};
inline constinit const ErrorCode qncertificates_parameter{"error.qncertificates.parameter"};
inline constinit const ErrorCode qncertificates_parameter_invalid{
    "error.qncertificates.parameter.invalid"};

} // namespace qncertificates::error
