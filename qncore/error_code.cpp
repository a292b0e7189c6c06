#include "qncore/error_code.h"

#include "qncore/error_info.h"

namespace qncore {

bool ErrorCode::covers(const ErrorCode& other) const noexcept {
    const std::string_view own = path();
    const std::string_view whole = other.path();
    return whole.starts_with(own) && (whole.size() == own.size() || whole[own.size()] == '.');
}

namespace error {

constinit const ErrorCode error{"error"};
constinit const ErrorCode qncore{"error.qncore"};
constinit const ErrorCode qncore_embeddedNul{"error.qncore.embeddedNul"};
constinit const ErrorCode qncore_encoding{"error.qncore.encoding"};
constinit const ErrorCode qncore_errno{"error.qncore.errno"};
constinit const ErrorCode qncore_exception{"error.qncore.exception"};
constinit const ErrorCode qncore_safeCast{"error.qncore.safeCast"};
constinit const ErrorCode qncore_windows{"error.qncore.windows"};

} // namespace error

} // namespace qncore
