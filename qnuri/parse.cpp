#include "qnuri/parse.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "qnuri/uri_parser.h"

namespace qnuri {

namespace impl {

namespace {

SchemeKind kind_of(std::string_view scheme, bool plainFile) noexcept {
    constexpr struct {
        std::string_view scheme;
        SchemeKind kind;
    } known[] = {
        {"file:", SchemeKind::file}, {"sip:", SchemeKind::sip},       {"sips:", SchemeKind::sip},
        {"tel:", SchemeKind::tel},   {"mailto:", SchemeKind::mailto},
    };
    for (const auto& entry : known) {
        if (scheme == entry.scheme) {
            return entry.kind == SchemeKind::file && plainFile ? SchemeKind::generic : entry.kind;
        }
    }
    return SchemeKind::generic;
}

} // namespace

void append_decoding(std::string& text, std::string_view source, CharClass decoded) {
    std::size_t copied = 0;
    for (std::size_t at = source.find('%'); at < source.size(); at = source.find('%', at)) {
        if (!is_escape(source, at)) {
            ++at;
            continue;
        }
        if (const char c = escaped_char(source, at); is(c, decoded)) {
            text.append(source, copied, at - copied).push_back(c);
            copied = at + 3;
        }
        at += 3;
    }
    text.append(source, copied);
}

void UriParser::take(qncore::StringRange UriParseData::*component, std::string_view source,
                     CharClass decoded) {
    const std::size_t start = record_.text.size();
    append_decoding(record_.text, source, decoded);
    record_.*component = written_since(start);
}

void UriParser::parse(std::string_view text, bool plainFile) {
    record_.text.reserve(text.size());
    const std::size_t first = find_first(text, delimiter);
    if (first < text.size() && text[first] == ':') {
        std::ranges::transform(text.substr(0, first + 1), std::back_inserter(record_.text),
                               to_lower);
    }
    const std::size_t start = record_.text.size();
    record_.scheme = {0, start};
    schemeKind_ = kind_of(record_.text, plainFile);
    const bool fragments = schemeKind_ == SchemeKind::generic || schemeKind_ == SchemeKind::file;
    const std::size_t fragment = fragments ? find_or_end(text, '#', start) : text.size();
    const std::string_view source = text.substr(start, fragment - start);
    switch (schemeKind_) {
    case SchemeKind::generic:
        parse_generic(source);
        break;
    case SchemeKind::file:
        parse_file(source);
        break;
    case SchemeKind::sip:
        parse_sip(source);
        break;
    case SchemeKind::tel:
        parse_tel(source);
        break;
    case SchemeKind::mailto:
        parse_mailto(source);
        break;
    }
    record_.schemeSpecificPart = written_since(start);
    take(&UriParseData::fragment, text.substr(fragment));
    shrink();
    check();
}

void UriParser::parse_generic(std::string_view source) {
    const std::size_t query = find_or_end(source, '?');
    const std::string_view hierarchical = source.substr(0, query);
    const std::size_t path = hierarchical.starts_with("//") ? find_or_end(hierarchical, '/', 2) : 0;
    take(&UriParseData::authority, hierarchical.substr(0, path));
    take(&UriParseData::path, hierarchical.substr(path));
    take(&UriParseData::query, source.substr(query));
}

/// Gives back storage that the normal form turned out not to need.
void UriParser::shrink() {
    std::string& text = record_.text;
    if (((text.size() + 1) ^ (text.capacity() + 1)) >= 4) {
        text = std::string(text);
    }
}

} // namespace impl

qncore::RefCountPtr<const impl::UriParseData>
parse_uri_reference(const char* text, std::size_t length, bool plainFile) {
    if (text != nullptr && length == qncore::StringRange::npos) {
        length = std::strlen(text);
    }
    if (text == nullptr || length == 0) {
        return impl::UriParseData::empty_record();
    }
    auto record = qncore::make_ref_counted<impl::UriParseData>();
    impl::UriParser(*record).parse({text, length}, plainFile);
    return record;
}

qncore::RefCountPtr<const impl::UriParseData> parse_uri_reference(const char* text,
                                                                  bool plainFile) {
    return parse_uri_reference(text, qncore::StringRange::npos, plainFile);
}

} // namespace qnuri
