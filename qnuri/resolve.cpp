// Resolution of references. The header lists the departures from RFC 3986, 5.2.
#include <optional>

#include "qnuri/char_classes.h"
#include "qnuri/parse.h"
#include "qnuri/uri.h"

namespace qnuri {

namespace {

using Text = std::optional<std::string>; ///< nothing on failure

/// Appends the segments of `text` from `cursor` on, and resolves "." and ".." among them. Returns
/// false if ".." finds no "/" to go back to.
bool append_segments(std::string& path, std::string_view text, std::size_t cursor) {
    while (cursor < text.size()) {
        const std::size_t end = chars::find_first(text, chars::slash, cursor + 1);
        const std::string_view segment = text.substr(cursor, end - cursor);
        cursor = end;
        if (segment == "/..") {
            const std::size_t parent = path.rfind('/');
            if (parent == std::string::npos) {
                return false;
            }
            path.resize(parent);
        } else if (segment != "/.") {
            path.append(segment);
            continue;
        }
        if (end == text.size()) {
            path.push_back('/'); // a dot at the end leaves its directory
        }
    }
    return true;
}

Text merge_paths(std::string_view base, std::string_view reference) {
    if (reference.starts_with('/')) {
        return std::string(reference);
    }
    const std::size_t cursor = base.rfind('/');
    const bool has_directory = cursor != std::string_view::npos;
    std::string text(has_directory ? base.substr(0, cursor + 1) : base);
    if (!text.starts_with('/')) {
        text.insert(0, 1, '/'); // required: the cursor does not move with it
    }
    text.append(reference);
    if (!has_directory) {
        return text; // required: the dots stay
    }
    std::string path = text.substr(0, cursor);
    if (!append_segments(path, text, cursor)) {
        return std::nullopt;
    }
    return path;
}

/// The length of what ".." cannot remove from the path of a base: the drive of a `file` URI.
std::size_t fixed_part(const UriReference& base, std::string_view path) {
    const std::size_t slash = path.find('/', 1);
    return slash != std::string_view::npos && base.scheme_equals("file") ? slash : 0;
}

/// Resolves a reference, without its fragment; nothing on failure.
Text merge_reference(const UriReference& reference, const Uri& base) {
    if (reference.is_empty() || !base.is_hierarchical()) {
        return std::nullopt;
    }
    std::string text = base.scheme().str() + ":";
    if (reference.has_authority()) {
        return text.append(reference.scheme_specific_part().view());
    }
    const UriStringSlice base_path = base.path();
    const std::size_t fixed = fixed_part(base, base_path.view());
    const Text merged = merge_paths(base_path.view().substr(fixed), reference.path().view());
    if (!merged) {
        return std::nullopt;
    }
    if (base.has_authority()) {
        text.append("//").append(base.authority().view());
    }
    text.append(base_path.view().substr(0, fixed)).append(*merged);
    if (reference.has_query()) {
        text.append("?").append(reference.query().view());
    }
    return text;
}

} // namespace

UriReference resolve(const UriReference& reference, const Uri& base) {
    if (reference.has_scheme()) {
        return reference;
    }
    Text text = merge_reference(reference, base);
    if (!text) {
        return UriReference::undefined();
    }
    if (reference.has_fragment()) {
        text->append("#").append(reference.fragment().view());
    }
    return UriReference::parse(*text);
}

Uri Uri::resolve(const UriReference& reference) const {
    if (reference.has_scheme()) {
        return Uri(reference);
    }
    const Text text = merge_reference(reference, *this);
    return text ? to_uri(UriReference(uri_reference_from_text(text->data(), text->size(), true)))
                : Uri();
}

UriReference resolve_text(const char* text, std::size_t length, const Uri& base, bool fileNames) {
    return resolve(UriReference(uri_reference_from_text(text, length, fileNames)), base);
}

} // namespace qnuri
