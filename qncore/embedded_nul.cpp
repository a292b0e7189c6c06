#include "qncore/embedded_nul.h"

#include "qncore/error_exception.h"
#include "qncore/errors.h"

namespace qncore::impl {

void raise_embedded_nul_error() {
    throw_error(error::qncore_embeddedNul, "The text holds a zero character",
                QN_LOCATION("qncore::impl::raise_embedded_nul_error()"));
}

} // namespace qncore::impl
