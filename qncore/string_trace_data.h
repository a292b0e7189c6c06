#pragma once

#include <iosfwd>
#include <string_view>

#include "qncore/interface_ptr.h"

namespace qncore {

/// Base of objects that a trace shows as text. The text is computed only if the message is written.
class StringTraceData {
  public:
    /// The text, which lives as long as the object.
    virtual std::string_view trace_text() const = 0;

    static void write_to_stream(std::ostream& stream,
                                const InterfacePtr<const StringTraceData, AtomicHolder>& data);

  protected:
    StringTraceData() = default;
    ~StringTraceData() = default;
};

std::ostream& operator<<(std::ostream& stream,
                         const InterfacePtr<const StringTraceData, AtomicHolder>& data);

} // namespace qncore
