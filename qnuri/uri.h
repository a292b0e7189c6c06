#pragma once

#include <typeinfo>

#include "qnuri/uri_reference.h"

namespace qnuri {

namespace impl {

/// A cast between kinds of references that cannot be; the only exception of this layer.
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

/// A reference with a scheme, or the undefined one.
class Uri : public UriReference {
  public:
    /// The undefined URI.
    Uri()
        : UriReference(undefined()) {}

    /// As the free `resolve`, save that the result has no fragment and that the merged text is
    /// parsed as `uri_reference_from_text` does for file names.
    Uri resolve(const UriReference& reference) const;

  private:
    friend Uri to_uri(const UriReference& reference);
    explicit Uri(const UriReference& reference)
        : UriReference(reference) {}
};

/// A reference without a scheme, or the undefined one.
class RelativeUri : public UriReference {
  public:
    /// The undefined reference.
    RelativeUri()
        : UriReference(undefined()) {}

    /// Shares the record; throws BadUriCast for an empty reference and for one with a scheme.
    static RelativeUri cast_from(const UriReference& reference);

  private:
    friend RelativeUri to_relative(const UriReference& reference);
    explicit RelativeUri(const UriReference& reference)
        : UriReference(reference) {}
};

/// Shares the record; undefined for an empty reference and for one without a scheme.
Uri to_uri(const UriReference& reference);

/// Shares the record; undefined for an empty reference and for one with a scheme.
RelativeUri to_relative(const UriReference& reference);

/// The reference as seen from `base`, which must be hierarchical; undefined on failure. The merge
/// departs from RFC 3986, 5.2 in the following, all of it required:
/// - an empty reference, and one that is a fragment alone, resolves to nothing;
/// - a reference path that begins with "/", and one behind an authority, keeps its dot segments;
/// - a reference of a query alone resolves against the directory of the base, not its path;
/// - ".." that would climb over the root fails;
/// - the dot segments of the base's own directory stay where they are;
/// - with a `file` base the first segment of its path, its drive, stays: also before a reference
///   path that begins with "/".
UriReference resolve(const UriReference& reference, const Uri& base);

/// Parses the text as `uri_reference_from_text` does, and resolves it. `length` may be npos.
UriReference resolve_text(const char* text, std::size_t length, const Uri& base, bool fileNames);

} // namespace qnuri
