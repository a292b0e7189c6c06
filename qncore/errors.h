#pragma once

#include "qncore/error_code.h"

// The codes of this layer, and the root of all.
namespace qncore::error {

inline constinit const ErrorCode error{"error"};
inline constinit const ErrorCode qncore{"error.qncore"};
inline constinit const ErrorCode qncore_embeddedNul{"error.qncore.embeddedNul"};
inline constinit const ErrorCode qncore_encoding{"error.qncore.encoding"};
inline constinit const ErrorCode qncore_errno{"error.qncore.errno"};
inline constinit const ErrorCode qncore_exception{"error.qncore.exception"};
inline constinit const ErrorCode qncore_safeCast{"error.qncore.safeCast"};
inline constinit const ErrorCode qncore_windows{"error.qncore.windows"};

} // namespace qncore::error
