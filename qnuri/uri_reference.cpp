#include "qnuri/uri_reference.h"

namespace qnuri {

qncore::InterfacePtr<const qncore::StringTraceData, qncore::AtomicHolder>
UriReference::trace_data() const {
    const bool has_fragment = record_->fragment.count() != 0;
    const qncore::StringTraceData* view = &record_->traceUri;
    if (!has_fragment) {
        view = &record_->traceUriReference;
    }
    return {view, record_};
}

} // namespace qnuri
