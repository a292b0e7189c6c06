#pragma once

#include <compare>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>

#include "qnuri/uri_parse_data.h"
#include "qnuri/uri_string_slice.h"

namespace qnuri {

class Uri;

/// A URI or a relative reference (RFC 3986, 4.1), valid or not. Copies share one record. A
/// moved-from value is undefined.
///
/// Two references are equal, and have the same hash, if their texts without the fragments are. The
/// digits of escapes compare without regard to case (qnuri/escaped_text.h).
class UriReference {
  public:
    /// The empty reference.
    UriReference() noexcept
        : record_(impl::UriParseData::empty_record()) {}

    /// Shares a record; null is the undefined one.
    explicit UriReference(qncore::RefCountPtr<const impl::UriParseData> record) noexcept
        : record_(std::move(record)) {}

    /// Parses any text; see `parse_uri_reference` (qnuri/parse.h) for the rules. Never fails: check
    /// `flags` for what is invalid.
    static UriReference parse(std::string_view text);

    /// No reference at all, the result of an operation that failed. It is also empty.
    static UriReference undefined() noexcept {
        return UriReference(impl::UriParseData::undefined_record());
    }

    /// The normal form of the whole text.
    const std::string& text() const noexcept { return record()->text; }
    /// The invalid components as bits of UriFlags; all bits if undefined.
    std::uint32_t flags() const noexcept { return record()->flags; }

    /// True when nothing stands before the fragment.
    bool is_empty() const noexcept { return record()->is_empty(); }
    bool is_undefined() const noexcept { return record()->is_undefined(); }

    bool has_scheme() const noexcept { return present(record()->scheme); }
    bool has_authority() const noexcept { return present(record()->authority); }
    bool has_query() const noexcept { return present(record()->query); }
    bool has_fragment() const noexcept { return present(record()->fragment); }

    /// The components, empty if absent: the scheme without its ":", the query without its "?", the
    /// fragment without its "#", the authority without its "//". The authority of `sip`, `tel` and
    /// `mailto` is the (first) address, the path their parameters or further addresses.
    UriStringSlice scheme() const noexcept;
    UriStringSlice scheme_specific_part() const noexcept;
    UriStringSlice authority() const noexcept;
    UriStringSlice path() const noexcept;
    UriStringSlice query() const noexcept;
    UriStringSlice fragment() const noexcept;

    /// Compares the scheme, ignoring ASCII case. Returns false for a null or empty name.
    bool scheme_equals(const char* name,
                       std::size_t length = qncore::StringRange::npos) const noexcept;

    /// Returns false for an empty reference and for a scheme whose specific part does not begin
    /// with "/".
    bool is_hierarchical() const noexcept;

    /// Returns the reference without its fragment.
    UriReference without_fragment() const;

    /// Returns a reference that leads from `base` to this URI. Returns this one itself if it has no
    /// scheme, or another scheme or authority than `base`, or shares only the root with a `file`
    /// base. Returns undefined if it is empty, or if this one or `base` is not hierarchical.
    ///
    /// Resolving the result does not always lead back here; this is required:
    /// - if the directory of one is a prefix of the other one's name, as `/a/` and `/ab/`;
    /// - if directories are empty (`//`), or the base has no path;
    /// - if the file name looks like a scheme, as in `/b:c`.
    UriReference relative_to(const Uri& base) const;

    /// Returns the URI up to the last "/" of its path, without query and fragment; undefined if it
    /// is empty or not hierarchical. A reference without a scheme gets the ":" of an empty one,
    /// which is invalid.
    UriReference directory() const;

    /// The text without the fragment, for a trace. Keeps the record alive.
    qncore::InterfacePtr<const qncore::StringTraceData, qncore::AtomicHolder> trace_data() const;

    /// A hash consistent with `==`.
    std::uint32_t hash() const noexcept;

    friend std::weak_ordering operator<=>(const UriReference& left,
                                          const UriReference& right) noexcept;
    friend bool operator==(const UriReference& left, const UriReference& right) noexcept {
        return (left <=> right) == std::weak_ordering::equivalent;
    }

    /// The shared record, never null.
    const qncore::RefCountPtr<const impl::UriParseData>& record() const noexcept {
        return record_ ? record_ : impl::UriParseData::undefined_record();
    }

  private:
    static bool present(const qncore::StringRange& component) noexcept {
        return impl::UriParseData::is_present(component);
    }

    qncore::RefCountPtr<const impl::UriParseData> record_; ///< null is the undefined one
};

/// Writes the whole text, or "<undefined>".
void write_to_stream(std::ostream& stream, const UriReference& uri);
std::ostream& operator<<(std::ostream& stream, const UriReference& uri);

} // namespace qnuri

template <>
struct std::hash<qnuri::UriReference> {
    std::size_t operator()(const qnuri::UriReference& uri) const noexcept { return uri.hash(); }
};
