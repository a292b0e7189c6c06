#include "ConfigurationFile/errors.h"

namespace vdcertificates::error {

constinit const qncore::ErrorCode sharing_violation{
    "error.qncertificates.filesystem.open.sharing_violation", true};

} // namespace vdcertificates::error
