#include "qncore/string_trace_data.h"

#include <ostream>

namespace qncore {

void StringTraceData::write_to_stream(
    std::ostream& stream, const InterfacePtr<const StringTraceData, AtomicHolder>& data) {
    if (data) {
        stream << data->trace_text();
    }
}

std::ostream& operator<<(std::ostream& stream,
                         const InterfacePtr<const StringTraceData, AtomicHolder>& data) {
    StringTraceData::write_to_stream(stream, data);
    return stream;
}

} // namespace qncore
