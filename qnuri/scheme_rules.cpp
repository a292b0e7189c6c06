// The rules of `file`, `sip`, `tel` and `mailto`.
#include <algorithm>

#include "qnuri/percent_encoding.h"
#include "qnuri/uri_parser.h"

namespace qnuri::impl {

using namespace chars;

namespace {

/// Tells whether a text begins with the drive of a Windows path: a letter, ":" or "|", a separator.
constexpr bool begins_with_drive(std::string_view text) noexcept {
    return text.size() > 2 && is(text[0], alpha) && (text[1] == ':' || text[1] == '|') &&
           is(text[2], separator);
}

} // namespace

void UriParser::parse_file() {
    std::string& text = record_.text;
    const std::size_t start = source_.written();
    const bool plain =
        source_.decode_until(question_mark | number_sign, unreserved, path_component.plain);
    source_.close_gap();
    const std::size_t further = source_.rest().size();
    complete_drive(start);
    const std::size_t path = normalise_host(start);
    source_.seek(text.size() - further);
    record_.authority = {start, path - start};
    record_.path = written_since(path);
    if (path <= start + 2) { // no host
        known_valid_ |= invalid_authority;
    }
    if (plain) {
        known_valid_ |= invalid_path;
    } else {
        char* const begin = text.data() + path;
        std::replace(begin, begin + record_.path.count(), '\\', '/');
    }
    normalise_drive(path);
    take(query_component, number_sign);
}

/// Completes the slashes before a drive to three.
void UriParser::complete_drive(std::size_t start) {
    const std::string_view written = std::string_view(record_.text).substr(start);
    std::size_t slashes = 0;
    while (slashes < std::min<std::size_t>(written.size(), 2) && is(written[slashes], separator)) {
        ++slashes;
    }
    if (begins_with_drive(written.substr(slashes))) {
        record_.text.insert(start, 3 - slashes, '/');
    }
}

/// Normalises the authority at `start`, if there is one. Returns its end.
std::size_t UriParser::normalise_host(std::size_t start) {
    constexpr std::string_view local = "localhost";
    std::string& text = record_.text;
    const std::size_t host = start + 2;
    if (text.size() < host || !is(text[start], separator) || !is(text[start + 1], separator)) {
        return start;
    }
    text[start] = text[start + 1] = '/';
    const std::size_t end = find_first(text, separator | question_mark | number_sign, host);
    for (std::size_t i = host; i < end; ++i) {
        text[i] = to_lower(text[i]);
    }
    // Required: these nine characters are removed even if the host goes on after them.
    if (!std::string_view(text).substr(host).starts_with(local)) {
        return end;
    }
    text.erase(host, local.size());
    return end - local.size();
}

/// Puts the drive letter in lower case and ":" after it.
void UriParser::normalise_drive(std::size_t path) {
    std::string& text = record_.text;
    if (text.size() > path && text[path] == '/' &&
        begins_with_drive(std::string_view(text).substr(path + 1))) {
        text[path + 1] = to_lower(text[path + 1]);
        text[path + 2] = ':';
    }
}

void UriParser::parse_sip() {
    constexpr CharClass user = unreserved | sip_user_punctuation;
    constexpr CharClass password = unreserved | sip_password_punctuation;
    const std::size_t start = source_.written();
    bool plain = true;
    // Required: the first "@" anywhere ends the user, even one after a ";".
    if (source_.rest().find('@') != std::string_view::npos) {
        plain = source_.decode_until(colon | at_sign, user, user) && source_.stands_at(at_sign);
        source_.decode_until(at_sign, password, password);
        source_.keep(1);
    }
    if (keep_host(semicolon | question_mark) && plain) {
        known_valid_ |= invalid_authority;
    }
    source_.keep_until(semicolon | question_mark);
    record_.authority = written_since(start);
    const std::size_t path = source_.written();
    take_sip_params();
    record_.path = written_since(path);
    take(query_component, CharClass{});
}

/// Decodes what a parameter may hold as it is, and replaces quoted values by escaped ones.
void UriParser::take_sip_params() {
    constexpr CharClass plain = unreserved | sip_param_punctuation;
    constexpr CharClass quoted = unreserved | sip_value_punctuation; // required: no brackets
    source_.decode_until(quote | question_mark, plain, plain);
    if (!source_.stands_at(quote)) {
        return;
    }
    source_.close_gap();
    const std::size_t start = source_.written();
    std::string_view params = source_.rest();
    params = params.substr(0, find_first(params, question_mark));
    const std::size_t size = params.size();
    std::string unquoted;
    for (std::size_t closing = params.find('"', 1); closing < params.size();
         closing = params.find('"', 1)) {
        unquoted += percent_encode(params.substr(1, closing - 1), quoted);
        params.remove_prefix(closing + 1);
        const std::size_t next = find_first(params, quote);
        unquoted += percent_decode(params.substr(0, next), plain);
        params.remove_prefix(next);
    }
    unquoted += percent_decode(params, plain);
    record_.text.replace(start, size, unquoted);
    source_.seek(start + unquoted.size());
}

void UriParser::parse_tel() {
    const std::size_t start = source_.written();
    source_.keep_until(semicolon);
    record_.authority = written_since(start);
    source_.keep(source_.stands_at(semicolon) ? 1 : 0);
    take({&UriParseData::path, UriFlags{}, unreserved}, CharClass{});
    take(query_component, CharClass{});
}

void UriParser::parse_mailto() {
    take_authority(comma | question_mark);
    source_.keep(source_.stands_at(comma) ? 1 : 0);
    take(path_component, question_mark);
    take(query_component, CharClass{});
}

} // namespace qnuri::impl
