#pragma once

#include <iosfwd>
#include <string_view>

#include "qncore/interface_ptr.h"

namespace qncore {

/// Base of objects that are traced as text. The text is requested only if the message is written.
class StringTraceData {
  public:
    /// The text. Valid while the object lives.
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
