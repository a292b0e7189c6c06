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

/// A URI or a relative reference (RFC 3986, 4.1), valid or not; copies share one record. A text
/// becomes a reference by the functions of qnuri/parse.h. A moved-from value is undefined.
///
/// Two references are equal, and have the same hash, when their texts without the fragments are,
/// where escapes compare without regard to the case of their digits (qnuri/escaped_text.h).
class UriReference {
  public:
    /// The empty reference.
    UriReference()
        : record_(impl::UriParseData::empty_record()) {}

    /// Shares a record; null stands for the undefined one.
    explicit UriReference(qncore::RefCountPtr<const impl::UriParseData> record) noexcept
        : record_(std::move(record)) {}

    /// The reference that says that there is no URI at all; it is empty, too.
    static UriReference undefined() { return UriReference(impl::UriParseData::undefined_record()); }

    /// The normal form of the whole text.
    const std::string& text() const noexcept { return record()->text; }
    /// Which components are invalid: bits of UriFlags, all bits when undefined.
    std::uint32_t flags() const noexcept { return record()->flags; }

    /// True when nothing stands before the fragment.
    bool is_empty() const noexcept { return record()->is_empty(); }
    bool is_undefined() const noexcept { return record()->is_undefined(); }

    bool has_scheme() const noexcept { return present(record()->scheme); }
    bool has_authority() const noexcept { return present(record()->authority); }
    bool has_query() const noexcept { return present(record()->query); }
    bool has_fragment() const noexcept { return present(record()->fragment); }

    /// The components, empty where they are absent: the scheme without its ":", the query without
    /// its "?", the fragment without its "#", the authority without the "//" of the text. For
    /// `sip`, `tel` and `mailto` the authority is the (first) address.
    UriStringSlice scheme() const noexcept;
    UriStringSlice scheme_specific_part() const noexcept;
    UriStringSlice authority() const noexcept;
    UriStringSlice path() const noexcept;
    UriStringSlice query() const noexcept;
    UriStringSlice fragment() const noexcept;

    /// Compares the scheme without regard to ASCII case; false for a null or empty name.
    bool scheme_equals(const char* name,
                       std::size_t length = qncore::StringRange::npos) const noexcept;

    /// False for the empty reference and for a scheme whose specific part does not begin with "/".
    bool is_hierarchical() const noexcept;

    /// The same without its fragment.
    UriReference without_fragment() const;

    /// A reference that leads from `base` here: this one itself when it has no scheme, or another
    /// scheme or authority than `base`, or shares only the root with a `file` base. Undefined for
    /// an empty reference, and when this one or `base` is not hierarchical.
    /// Where one directory's name begins with the whole other one, as `/ab/` with `/a/`, the
    /// result leads elsewhere; that is required.
    UriReference relative_to(const Uri& base) const;

    /// The URI up to the last "/" of its path, without query and fragment; undefined for an empty
    /// and for a not hierarchical one. Meant for references with a scheme: to others it gives
    /// the ":" of an empty one, which is invalid.
    UriReference directory() const;

    /// The reference as a trace shows it, alive as long as the result.
    qncore::InterfacePtr<const qncore::StringTraceData, qncore::AtomicHolder> trace_data() const;

    /// Hash that agrees with `==`.
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
