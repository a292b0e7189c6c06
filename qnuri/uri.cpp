#include "qnuri/uri.h"

namespace qnuri {

const char* impl::BadUriCast::what() const noexcept {
    return "bad cast";
}

Uri Uri::parse(std::string_view text) {
    return to_uri(UriReference::parse(text));
}

RelativeUri RelativeUri::cast_from(const UriReference& reference) {
    if (reference.is_empty() || reference.has_scheme()) {
        throw impl::BadUriCast("qnuri::RelativeUri::cast_from");
    }
    return RelativeUri(reference);
}

RelativeUri to_relative(const UriReference& reference) {
    const bool relative = !reference.is_empty() && !reference.has_scheme();
    return relative ? RelativeUri(reference) : RelativeUri();
}

Uri to_uri(const UriReference& reference) {
    return reference.has_scheme() ? Uri(reference) : Uri();
}

} // namespace qnuri
