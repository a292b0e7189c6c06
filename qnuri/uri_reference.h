#pragma once

#include <string>

#include "qnuri/uri_parse_data.h"

namespace qnuri {

/// A URI or a relative reference, valid or not; copies share one record.
class UriReference {
  public:
    /// The empty reference.
    UriReference()
        : record_(impl::UriParseData::empty_record()) {}

    /// Shares a record; null stands for the undefined one.
    explicit UriReference(qncore::RefCountPtr<const impl::UriParseData> record)
        : record_(record ? std::move(record) : impl::UriParseData::undefined_record()) {}

    /// The reference that says that there is no URI at all.
    static UriReference undefined() { return UriReference(impl::UriParseData::undefined_record()); }

    /// The normal form of the whole text.
    const std::string& text() const noexcept { return record_->text; }

    bool is_empty() const noexcept { return record_->is_empty(); }
    bool is_undefined() const noexcept { return record_->is_undefined(); }

    /// The reference as a trace shows it, alive as long as the result.
    qncore::InterfacePtr<const qncore::StringTraceData, qncore::AtomicHolder> trace_data() const;

  private:
    qncore::RefCountPtr<const impl::UriParseData> record_;
};

} // namespace qnuri
