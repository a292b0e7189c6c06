// Runs texts, alone and in pairs (two lines), through every operation of the URI layer.
#include <algorithm>
#include <compare>
#include <cstdint>
#include <sstream>
#include <string>
#include <string_view>

#include "fuzz/require.h"
#include "qnuri/parse.h"
#include "qnuri/percent_encoding.h"
#include "qnuri/uri.h"

namespace {

using fuzz::require;
using qnuri::UriReference;
using qnuri::impl::UriParseData;

bool same(const UriParseData& left, const UriParseData& right) {
    return left.text == right.text && left.flags == right.flags && left.scheme == right.scheme &&
           left.authority == right.authority && left.path == right.path &&
           left.query == right.query && left.fragment == right.fragment &&
           left.schemeSpecificPart == right.schemeSpecificPart;
}

bool has_stray_percent(std::string_view text) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%' && !qnuri::is_escape(text, at)) {
            return true;
        }
    }
    return false;
}

/// Tells whether the decoded text names the local host, in upper or lower case.
bool names_local_host(std::string_view text) {
    std::string plain = qnuri::parse_uri_reference(text.data(), text.size(), true)->text;
    std::ranges::transform(plain, plain.begin(), qnuri::chars::to_lower);
    return plain.find("localhost") != std::string::npos;
}

/// Tells whether the normal form of a text may change when it is parsed again: an escape can arise
/// from a "%" that began none, each parse removes one "localhost", and quotes are removed from
/// parameters.
bool may_change_again(std::string_view text, const UriReference& parsed) {
    const bool sip = parsed.scheme_equals("sip") || parsed.scheme_equals("sips");
    return has_stray_percent(text) || (parsed.scheme_equals("file") && names_local_host(text)) ||
           (sip && text.find('"') != std::string_view::npos);
}

void check_record(const UriReference& parsed) {
    const UriParseData& record = *parsed.record();
    const std::size_t size = record.text.size();
    std::size_t end = 0;
    for (const auto& range :
         {record.scheme, record.authority, record.path, record.query, record.fragment}) {
        require(range.start() >= end && range.count() <= size - range.start(),
                "components lie in the text in their order");
        end = range.start() + range.count();
    }
    require(end == size, "the last component ends with the text");
    const std::uint32_t parts =
        qnuri::invalid_authority | qnuri::invalid_path | qnuri::invalid_query;
    require(((record.flags & parts) != 0) ==
                ((record.flags & qnuri::invalid_scheme_specific_part) != 0),
            "a specific part is as valid as its parts");
    std::ostringstream printed;
    printed << parsed;
    require(printed.str() == record.text, "the text is what is printed");
}

void check_text(std::string_view text) {
    const UriReference parsed = UriReference::parse(text);
    check_record(parsed);
    const UriReference cut = parsed.without_fragment();
    check_record(cut);
    require(!cut.has_fragment() && cut == parsed && cut.hash() == parsed.hash() &&
                cut.is_empty() == parsed.is_empty(),
            "a fragment does not count");
    require(same(*UriReference::parse(parsed.text()).record(), *parsed.record()) ||
                may_change_again(text, parsed),
            "a normal text stays as it is");
    const UriReference directory = parsed.directory();
    require(directory.is_undefined() == !parsed.is_hierarchical(), "directories are hierarchical");

    const UriReference name(qnuri::uri_from_file_name(text.data(), text.size()));
    check_record(name);
    if (qnuri::is_file_path(text.data(), text.data() + text.size())) {
        require(name.scheme_equals("file") && (name.flags() & qnuri::invalid_path) == 0,
                "a file path gives a file URI with a valid path");
    }
}

void check_pair(std::string_view first, std::string_view second) {
    const UriReference reference = UriReference::parse(first);
    const qnuri::Uri base = qnuri::Uri::parse(second);
    for (const UriReference& result :
         {resolve(reference, base), UriReference(base.resolve(reference))}) {
        require(result.is_undefined() || result.has_scheme(), "what is resolved has a scheme");
        require(result.is_undefined() || reference.has_scheme() || base.is_hierarchical(),
                "only hierarchical bases resolve");
    }
    if (const UriReference relative = reference.relative_to(base); !relative.is_undefined()) {
        check_record(relative);
    }
    const auto order = reference <=> base;
    require(std::is_lt(order) == std::is_gt(base <=> reference), "the order has two directions");
    require(std::is_neq(order) || reference.hash() == base.hash(), "equal ones have one hash");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const std::size_t line = text.find('\n');
    check_text(text.substr(0, line));
    if (line != std::string_view::npos) {
        check_text(text.substr(line + 1));
        check_pair(text.substr(0, line), text.substr(line + 1));
    }
    return 0;
}
