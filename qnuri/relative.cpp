// References from one URI to another, and the directory of a URI.
#include <algorithm>

#include "qnuri/parse.h"
#include "qnuri/uri.h"

namespace qnuri {

namespace {

/// The path up to and including its last "/".
std::string_view directory_of(std::string_view path) {
    return path.substr(0, path.rfind('/') + 1); // npos, when there is none, gives 0
}

std::string_view from(std::string_view text, std::size_t start) {
    return text.substr(std::min(start, text.size()));
}

} // namespace

UriReference UriReference::relative_to(const Uri& base) const {
    if (is_empty()) {
        return undefined();
    }
    if (!has_scheme()) {
        return *this;
    }
    if (!is_hierarchical() || !base.is_hierarchical()) {
        return undefined();
    }
    if (scheme() != base.scheme() || authority() != base.authority()) {
        return *this;
    }
    const std::string_view whole = record()->view(record()->path);
    const std::string_view target = directory_of(whole);
    const std::string_view origin = directory_of(base.record()->view(base.record()->path));
    const auto common =
        static_cast<std::size_t>(std::ranges::mismatch(target, origin).in1 - target.begin());
    const std::size_t shared = origin.rfind('/', common);
    if (shared == 0 && scheme_equals("file")) {
        return *this;
    }
    const std::size_t start = shared + 1; // 0 when there is no "/" at all
    std::string text;
    for (auto up = std::ranges::count(from(origin, start), '/'); up > 0; --up) {
        text.append("../");
    }
    text.append(from(target, start)).append(whole.substr(target.size()));
    text.append(record()->view(record()->query)).append(record()->view(record()->fragment));
    return parse(text);
}

UriReference UriReference::directory() const {
    if (!is_hierarchical()) {
        return undefined();
    }
    std::string text = scheme().str() + ":"; // required, also for a reference without a scheme
    if (has_authority()) {
        text.append("//").append(authority().view());
    }
    text.append(directory_of(record()->view(record()->path)));
    return UriReference(uri_reference_from_text(text.data(), text.size(), true));
}

} // namespace qnuri
