#include "qnuri/uri_parse_data.h"

namespace qnuri::impl {

std::string_view UriParseData::TraceDataUri::trace_text() const {
    const qncore::StringRange& part = record().schemeSpecificPart;
    return std::string_view(record().text).substr(0, part.start() + part.count());
}

std::string_view UriParseData::TraceDataUriReference::trace_text() const {
    return record().text;
}

qncore::RefCountPtr<const UriParseData> UriParseData::undefined_record() {
    static const auto record = [] {
        auto made = qncore::make_ref_counted<UriParseData>();
        made->flags = undefined_flags;
        return qncore::RefCountPtr<const UriParseData>(std::move(made));
    }();
    return record;
}

qncore::RefCountPtr<const UriParseData> UriParseData::empty_record() {
    static const qncore::RefCountPtr<const UriParseData> record =
        qncore::make_ref_counted<UriParseData>();
    return record;
}

} // namespace qnuri::impl
