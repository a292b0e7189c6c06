#include "qnuri/parse.h"

#include <algorithm>

#include "qnuri/uri_parser.h"
#include "qnuri/uri_reference.h"

namespace qnuri {

namespace impl {

using namespace chars;

namespace {

constexpr std::uint32_t all_components =
    invalid_scheme | invalid_fragment | invalid_authority | invalid_path | invalid_query;

SchemeKind kind_of(std::string_view scheme, bool plainFile) noexcept {
    switch (scheme.front()) {
    case 'f':
        return scheme == "file:" && !plainFile ? SchemeKind::file : SchemeKind::generic;
    case 's':
        return scheme == "sip:" || scheme == "sips:" ? SchemeKind::sip : SchemeKind::generic;
    case 't':
        return scheme == "tel:" ? SchemeKind::tel : SchemeKind::generic;
    case 'm':
        return scheme == "mailto:" ? SchemeKind::mailto : SchemeKind::generic;
    default:
        return SchemeKind::generic;
    }
}

} // namespace

void UriParser::parse(bool plainFile) {
    take_scheme(plainFile);
    const std::size_t start = source_.written();
    switch (schemeKind_) {
    case SchemeKind::generic:
        parse_generic();
        break;
    case SchemeKind::file:
        parse_file();
        break;
    case SchemeKind::sip:
        parse_sip();
        break;
    case SchemeKind::tel:
        parse_tel();
        break;
    case SchemeKind::mailto:
        parse_mailto();
        break;
    }
    record_.schemeSpecificPart = written_since(start);
    take(fragment_component, CharClass{}, source_.rest().empty() ? 0 : 1);
    source_.finish();
    if (known_valid_ != all_components) {
        check();
    }
}

void UriParser::take_scheme(bool plainFile) {
    source_.keep_while(lower | digit | scheme_punctuation);
    if (source_.stands_at(colon) && is(record_.text[0], lower)) {
        known_valid_ |= invalid_scheme;
    } else {
        source_.keep_until(delimiter);
        if (!source_.stands_at(colon)) {
            known_valid_ |= invalid_scheme;
            source_.seek(0);
            return;
        }
        std::ranges::transform(record_.view(written_since(0)), record_.text.begin(), to_lower);
    }
    source_.keep(1);
    record_.scheme = written_since(0);
    schemeKind_ = kind_of(record_.view(record_.scheme), plainFile);
}

/// Passes what most hosts are: a name or an IPv4 address, and perhaps a port. Returns whether this
/// was the whole host, which is then valid under the rules of every scheme.
bool UriParser::keep_host(CharClass ends) {
    source_.keep_while(unreserved);
    if (source_.stands_at(colon)) {
        source_.keep(1);
        source_.keep_while(digit);
    }
    return source_.rest().empty() || source_.stands_at(ends);
}

void UriParser::take_authority(CharClass ends, std::size_t prefix) {
    const std::size_t start = source_.written();
    source_.keep(prefix);
    source_.keep_while(unreserved);
    if (source_.stands_at(at_sign)) {
        source_.keep(1); // what was passed is the user
    }
    if (keep_host(ends)) {
        known_valid_ |= invalid_authority;
    }
    source_.decode_until(ends, unreserved, unreserved | colon | at_sign | bracket);
    record_.authority = written_since(start);
}

void UriParser::parse_generic() {
    if (source_.rest().starts_with("//")) {
        take_authority(slash | question_mark | number_sign, 2);
    } else {
        record_.authority = written_since(source_.written());
        known_valid_ |= invalid_authority;
    }
    take(path_component, question_mark | number_sign);
    take(query_component, number_sign);
}

} // namespace impl

qncore::RefCountPtr<const impl::UriParseData>
parse_uri_reference(const char* text, std::size_t length, bool plainFile) {
    const std::string_view source = impl::measured(text, length);
    if (source.empty()) {
        return impl::UriParseData::empty_record();
    }
    auto record = qncore::make_ref_counted<impl::UriParseData>(source);
    impl::UriParser(*record).parse(plainFile);
    return record;
}

qncore::RefCountPtr<const impl::UriParseData> parse_uri_reference(const char* text,
                                                                  bool plainFile) {
    return parse_uri_reference(text, qncore::StringRange::npos, plainFile);
}

UriReference UriReference::parse(std::string_view text) {
    return UriReference(parse_uri_reference(text.data(), text.size(), false));
}

} // namespace qnuri
