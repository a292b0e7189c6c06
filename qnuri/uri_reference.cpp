#include "qnuri/uri_reference.h"

#include <algorithm>
#include <ostream>

#include "qnuri/char_classes.h"
#include "qnuri/escaped_text.h"
#include "qnuri/uri_parser.h"

namespace qnuri {

using impl::UriParseData;

UriStringSlice UriReference::scheme() const noexcept {
    const qncore::StringRange& range = record()->scheme;
    return {record(), range.subrange(0, has_scheme() ? range.count() - 1 : 0)};
}

UriStringSlice UriReference::scheme_specific_part() const noexcept {
    return {record(), record()->schemeSpecificPart};
}

UriStringSlice UriReference::authority() const noexcept {
    return {record(), record()->bare_authority()};
}

UriStringSlice UriReference::path() const noexcept {
    return {record(), record()->path};
}

UriStringSlice UriReference::query() const noexcept {
    return {record(), record()->query.subrange(1, qncore::StringRange::npos)};
}

UriStringSlice UriReference::fragment() const noexcept {
    return {record(), record()->fragment.subrange(1, qncore::StringRange::npos)};
}

bool UriReference::scheme_equals(const char* name, std::size_t length) const noexcept {
    const std::string_view asked = impl::measured(name, length);
    return !asked.empty() && std::ranges::equal(asked, scheme().view(), {}, chars::to_lower);
}

bool UriReference::is_hierarchical() const noexcept {
    return !is_empty() && !record()->is_opaque();
}

UriReference UriReference::without_fragment() const {
    if (!has_fragment()) {
        return UriReference(record());
    }
    const UriParseData& whole = *record();
    auto cut = qncore::make_ref_counted<UriParseData>();
    cut->text = whole.text_before_fragment();
    cut->flags = whole.flags & ~std::uint32_t{invalid_fragment};
    cut->scheme = whole.scheme;
    cut->schemeSpecificPart = whole.schemeSpecificPart;
    cut->authority = whole.authority;
    cut->path = whole.path;
    cut->query = whole.query;
    cut->fragment = {cut->text.size(), 0};
    return UriReference(std::move(cut));
}

qncore::InterfacePtr<const qncore::StringTraceData, qncore::AtomicHolder>
UriReference::trace_data() const {
    const qncore::StringTraceData* view = &record()->traceUri;
    if (!has_fragment()) {
        view = &record()->traceUriReference;
    }
    return {view, record()};
}

std::uint32_t UriReference::hash() const noexcept {
    const std::string_view text = record()->text_before_fragment();
    return hash_escaped(text.data(), text.size());
}

std::weak_ordering operator<=>(const UriReference& left, const UriReference& right) noexcept {
    const std::string_view first = left.record()->text_before_fragment();
    const std::string_view second = right.record()->text_before_fragment();
    const std::size_t shared = std::min(first.size(), second.size());
    const int order = compare_escaped(first.data(), shared, second.data(), shared);
    return order != 0 ? order <=> 0 : first.size() <=> second.size();
}

void write_to_stream(std::ostream& stream, const UriReference& uri) {
    if (uri.is_undefined()) {
        stream << "<undefined>";
        return;
    }
    qncore::StringTraceData::write_to_stream(stream,
                                             {&uri.record()->traceUriReference, uri.record()});
}

std::ostream& operator<<(std::ostream& stream, const UriReference& uri) {
    write_to_stream(stream, uri);
    return stream;
}

} // namespace qnuri
