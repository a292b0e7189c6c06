#pragma once

#include <string>
#include <string_view>

#include "qnuri/uri_parse_data.h"

namespace qnuri {

/// A stretch of a URI's text. It shares the record, so that the text lives as long as the slice,
/// and copies no character.
class UriStringSlice {
  public:
    UriStringSlice(qncore::RefCountPtr<const impl::UriParseData> record,
                   qncore::StringRange range) noexcept
        : record_(std::move(record))
        , range_(range) {}

    const char* data() const noexcept { return record_->text.data() + range_.start(); }
    std::size_t size() const noexcept { return range_.count(); }
    bool empty() const noexcept { return size() == 0; }
    /// Where the slice lies in the text of the URI.
    const qncore::StringRange& range() const noexcept { return range_; }
    /// The characters; they live as long as any slice or reference of the record.
    std::string_view view() const noexcept { return {data(), size()}; }
    std::string str() const { return std::string(view()); }

    /// Plain comparison of sizes and bytes.
    friend bool operator==(const UriStringSlice& left, const UriStringSlice& right) noexcept {
        return left.view() == right.view();
    }

  private:
    qncore::RefCountPtr<const impl::UriParseData> record_;
    qncore::StringRange range_;
};

} // namespace qnuri
