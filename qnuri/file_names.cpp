// References from file names.
#include <algorithm>

#include "qnuri/parse.h"
#include "qnuri/percent_encoding.h"
#include "qnuri/uri_parser.h"

namespace qnuri {

namespace {

using Record = qncore::RefCountPtr<const impl::UriParseData>;

Record parse(std::string_view text) {
    return parse_uri_reference(text.data(), text.size(), false);
}

/// Replaces "\" by "/" and escapes what a path cannot hold, up to the first "?".
std::string escaped_name(std::string_view text) {
    const std::size_t tail = chars::find_first(text, chars::question_mark);
    std::string head(text.substr(0, tail));
    std::ranges::replace(head, '\\', '/');
    return percent_encode(head, chars::unreserved | chars::path_punctuation)
        .append(text.substr(tail));
}

Record from_name(std::string_view text, bool rooted) {
    if (is_file_path(text.data(), text.data() + text.size())) {
        const std::string name = escaped_name(text);
        return parse((name.starts_with('/') ? "file:" : "file:///") + name);
    }
    if (rooted) {
        return parse(escaped_name(text));
    }
    Record record = parse(text);
    if (!impl::UriParseData::is_present(record->scheme) && (record->flags & invalid_path) != 0) {
        return parse(escaped_name(text));
    }
    return record;
}

} // namespace

bool is_file_path(const char* begin, const char* end) noexcept {
    const std::string_view text(begin, static_cast<std::size_t>(end - begin));
    if (text.size() < 3) {
        return false;
    }
    if (text.starts_with("//")) {
        return text[2] != '/' && text.find('/', 3) < text.size();
    }
    return text.starts_with("\\\\") || (chars::is(text[0], chars::alpha) && text[1] == ':' &&
                                        (text[2] == '\\' || text[2] == '/'));
}

Record uri_reference_from_text(const char* text, std::size_t length, bool fileNames) {
    const std::string_view name = impl::measured(text, length);
    return fileNames ? from_name(name, name.starts_with('\\')) : parse(name);
}

Record uri_from_file_name(const char* text, std::size_t length) {
    const std::string_view name = impl::measured(text, length);
    return from_name(name, name.starts_with('\\') || name.starts_with('/'));
}

} // namespace qnuri
