#include "qncertificates/errors.h"

namespace qncertificates::error {

using qncore::ErrorCode;

constinit const ErrorCode qncertificates{"error.qncertificates"};
constinit const ErrorCode qncertificates_filesystem{"error.qncertificates.filesystem"};
constinit const ErrorCode qncertificates_filesystem_mkdir{"error.qncertificates.filesystem.mkdir"};
constinit const ErrorCode qncertificates_parameter{"error.qncertificates.parameter"};
constinit const ErrorCode qncertificates_parameter_invalid{
    "error.qncertificates.parameter.invalid"};

} // namespace qncertificates::error
