#pragma once

#include <string>
#include <string_view>

#include "qnuri/uri_parse_data.h"

namespace qnuri {

/// A range of a URI's text. It shares the record, which keeps the text alive, and copies no
/// character.
class UriStringSlice {
  public:
    UriStringSlice(qncore::RefCountPtr<const impl::UriParseData> record,
                   qncore::StringRange range) noexcept
        : record_(std::move(record))
        , range_(range) {}

    const char* data() const noexcept { return record_->text.data() + range_.start(); }
    std::size_t size() const noexcept { return range_.count(); }
    bool empty() const noexcept { return size() == 0; }
    /// The position of the slice in the text of the URI.
    const qncore::StringRange& range() const noexcept { return range_; }
    /// The characters. Some slice or reference of the record must outlive the view.
    std::string_view view() const noexcept { return {data(), size()}; }
    std::string str() const { return std::string(view()); }

    /// Compares sizes and bytes.
    friend bool operator==(const UriStringSlice& left, const UriStringSlice& right) noexcept {
        return left.view() == right.view();
    }

  private:
    qncore::RefCountPtr<const impl::UriParseData> record_;
    qncore::StringRange range_;
};

} // namespace qnuri
