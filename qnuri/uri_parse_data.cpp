#include "qnuri/uri_parse_data.h"

namespace qnuri::impl {

std::string_view UriParseData::TraceDataUri::trace_text() const {
    return record().text_before_fragment();
}

std::string_view UriParseData::TraceDataUriReference::trace_text() const {
    return record().text;
}

qncore::StringRange UriParseData::bare_authority() const noexcept {
    if (is_opaque()) {
        return authority;
    }
    constexpr std::size_t slashes = 2;
    return authority.count() >= slashes ? authority.subrange(slashes, authority.count())
                                        : authority.subrange(0, 0);
}

const qncore::RefCountPtr<const UriParseData>& UriParseData::undefined_record() {
    static const auto record = [] {
        auto made = qncore::make_ref_counted<UriParseData>();
        made->flags = undefined_flags;
        return qncore::RefCountPtr<const UriParseData>(std::move(made));
    }();
    return record;
}

const qncore::RefCountPtr<const UriParseData>& UriParseData::empty_record() {
    static const qncore::RefCountPtr<const UriParseData> record =
        qncore::make_ref_counted<UriParseData>();
    return record;
}

} // namespace qnuri::impl
