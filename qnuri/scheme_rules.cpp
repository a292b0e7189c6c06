// What `file`, `sip`, `tel` and `mailto` have of their own.
#include <algorithm>

#include "qnuri/uri_parser.h"

namespace qnuri::impl {

namespace {

constexpr bool is_slash(char c) noexcept {
    return c == '/' || c == '\\';
}

/// A letter and ":" or "|" in front of a slash: the drive of a Windows path.
constexpr bool begins_with_drive(std::string_view text) noexcept {
    return text.size() > 2 && is(text[0], alpha) && (text[1] == ':' || text[1] == '|') &&
           is_slash(text[2]);
}

} // namespace

void UriParser::parse_file(std::string_view source) {
    const std::size_t query = find_or_end(source, '?');
    std::string& text = record_.text;
    const std::size_t start = text.size();
    append_decoding(text, source.substr(0, query), unreserved);
    complete_drive(start);
    const std::size_t path = normalise_host(start);
    record_.authority = {start, path - start};
    std::replace(text.begin() + static_cast<std::ptrdiff_t>(path), text.end(), '\\', '/');
    normalise_drive(path);
    record_.path = written_since(path);
    take(&UriParseData::query, source.substr(query));
}

/// Puts as many slashes in front of a drive as make three.
void UriParser::complete_drive(std::size_t start) {
    const std::string_view written = std::string_view(record_.text).substr(start);
    std::size_t slashes = 0;
    while (slashes < std::min<std::size_t>(written.size(), 2) && is_slash(written[slashes])) {
        ++slashes;
    }
    if (begins_with_drive(written.substr(slashes))) {
        record_.text.insert(start, 3 - slashes, '/');
    }
}

/// Brings the authority at `start`, if there is one, to its normal form and gives its end.
std::size_t UriParser::normalise_host(std::size_t start) {
    constexpr std::string_view local = "localhost";
    std::string& text = record_.text;
    const std::size_t host = start + 2;
    if (text.size() < host || !is_slash(text[start]) || !is_slash(text[start + 1])) {
        return start;
    }
    text[start] = text[start + 1] = '/';
    std::size_t end = host;
    for (; end < text.size() && !is_slash(text[end]); ++end) {
        text[end] = to_lower(text[end]);
    }
    // Required: these nine characters go also where the host has more behind them.
    if (text.compare(host, local.size(), local) == 0) {
        text.erase(host, local.size());
        end -= local.size();
    }
    return end;
}

/// Folds the drive letter, and makes its sign ":".
void UriParser::normalise_drive(std::size_t path) {
    std::string& text = record_.text;
    if (text.size() > path && text[path] == '/' &&
        begins_with_drive(std::string_view(text).substr(path + 1))) {
        text[path + 1] = to_lower(text[path + 1]);
        text[path + 2] = ':';
    }
}

void UriParser::parse_sip(std::string_view source) {
    std::string& text = record_.text;
    const std::size_t start = text.size();
    std::size_t host = 0;
    // Required: the first "@" anywhere ends the user, also one behind a ";".
    if (const std::size_t at = source.find('@'); at < source.size()) {
        const std::string_view user = source.substr(0, at);
        const std::size_t password = find_or_end(user, ':');
        append_decoding(text, user.substr(0, password), unreserved | sip_user_punctuation);
        append_decoding(text, user.substr(password), unreserved | sip_password_punctuation);
        host = at;
    }
    const std::size_t params = std::min(source.find_first_of(";?", host), source.size());
    text.append(source, host, params - host);
    record_.authority = written_since(start);
    const std::size_t query = find_or_end(source, '?', params);
    const std::size_t path = text.size();
    append_sip_params(source.substr(params, query - params));
    record_.path = written_since(path);
    take(&UriParseData::query, source.substr(query));
}

/// Decodes what a parameter may hold as it stands, and turns quoted values into escaped ones.
void UriParser::append_sip_params(std::string_view params) {
    constexpr CharClass plain = unreserved | sip_param_punctuation;
    std::string& text = record_.text;
    while (!params.empty()) {
        const std::size_t quote = find_or_end(params, '"');
        append_decoding(text, params.substr(0, quote), plain);
        params.remove_prefix(quote);
        const std::size_t closing = params.find('"', 1);
        if (closing >= params.size()) {
            append_decoding(text, params, plain);
            return;
        }
        append_escaped(text, params.substr(1, closing - 1), plain);
        params.remove_prefix(closing + 1);
    }
}

/// Required, for the brackets among the plain characters of a parameter: what must always be
/// escaped is so although the class holds it.
void append_escaped(std::string& text, std::string_view source, CharClass kept) {
    constexpr char digits[] = "0123456789abcdef";
    for (const char c : source) {
        if (is(c, kept) && !is(c, always_escaped)) {
            text.push_back(c);
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        text.append({'%', digits[byte / 16], digits[byte % 16]});
    }
}

void UriParser::parse_tel(std::string_view source) {
    std::size_t params = find_or_end(source, ';');
    take(&UriParseData::authority, source.substr(0, params), CharClass{});
    if (params < source.size()) {
        record_.text.push_back(source[params++]);
    }
    take(&UriParseData::path, source.substr(params));
    take(&UriParseData::query, {});
}

void UriParser::parse_mailto(std::string_view source) {
    std::size_t further = std::min(source.find_first_of(",?"), source.size());
    take(&UriParseData::authority, source.substr(0, further));
    if (further < source.size() && source[further] == ',') {
        record_.text.push_back(source[further++]);
    }
    const std::size_t query = find_or_end(source, '?', further);
    take(&UriParseData::path, source.substr(further, query - further));
    take(&UriParseData::query, source.substr(query));
}

} // namespace qnuri::impl
