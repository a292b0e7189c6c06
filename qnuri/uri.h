#pragma once

#include <typeinfo>

#include "qnuri/uri_reference.h"

namespace qnuri {

namespace impl {

/// A failed cast between kinds of references; the only exception of this layer.
class BadUriCast : public std::bad_cast {
  public:
    explicit BadUriCast(const char* cast) noexcept
        : cast_(cast) {}

    /// "bad cast".
    const char* what() const noexcept override;
    /// The cast that failed, such as "qnuri::RelativeUri::cast_from".
    const char* cast() const noexcept { return cast_; }

  private:
    const char* cast_;
};

} // namespace impl

/// A reference with a scheme, or the undefined one. Do not assign through a `UriReference&` to a
/// `Uri`: that could give it a reference without a scheme.
class Uri : public UriReference {
  public:
    /// The undefined URI.
    Uri() noexcept
        : UriReference(undefined()) {}

    /// `to_uri` of the parsed text: undefined if it has no scheme.
    static Uri parse(std::string_view text);

    /// Does the same as the free `resolve`, but drops the fragment of a relative reference and
    /// parses the merged text as `uri_reference_from_text` does with `fileNames`.
    Uri resolve(const UriReference& reference) const;

  private:
    friend Uri to_uri(const UriReference& reference);
    explicit Uri(const UriReference& reference)
        : UriReference(reference) {}
};

/// A reference without a scheme, or the undefined one. The note at `Uri` holds here, too.
class RelativeUri : public UriReference {
  public:
    /// The undefined reference.
    RelativeUri() noexcept
        : UriReference(undefined()) {}

    /// Shares the record. Throws BadUriCast if the reference is empty or has a scheme.
    static RelativeUri cast_from(const UriReference& reference);

  private:
    friend RelativeUri to_relative(const UriReference& reference);
    explicit RelativeUri(const UriReference& reference)
        : UriReference(reference) {}
};

/// Shares the record; undefined if the reference has no scheme.
Uri to_uri(const UriReference& reference);

/// Shares the record; undefined if the reference is empty or has a scheme.
RelativeUri to_relative(const UriReference& reference);

/// Resolves a reference against `base`. A reference with a scheme is returned as it is. Returns
/// undefined if `base` is not hierarchical. The merge departs from RFC 3986, 5.2 in these points,
/// all of which are required:
/// - an empty reference, and one that is only a fragment, gives undefined;
/// - a reference path that begins with "/", and one after an authority, keeps its dot segments;
/// - a reference that is only a query replaces the last segment of the base's path;
/// - ".." above the root gives undefined;
/// - the dot segments in the base's own directory stay, and if the base's path has no "/", so do
///   those of the reference;
/// - the first segment of a `file` base's path, the drive, stays, even before a reference path that
///   begins with "/".
UriReference resolve(const UriReference& reference, const Uri& base);

/// Parses the text as `uri_reference_from_text` does and resolves it. A length of npos measures it.
UriReference resolve_text(const char* text, std::size_t length, const Uri& base, bool fileNames);

} // namespace qnuri
