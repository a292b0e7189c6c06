#include "qncore/error_code.h"

namespace qncore {

bool ErrorCode::covers(const ErrorCode& other) const noexcept {
    const std::string_view own = path();
    const std::string_view whole = other.path();
    return whole.starts_with(own) && (whole.size() == own.size() || whole[own.size()] == '.');
}

} // namespace qncore
