#pragma once

#include <cstdint>
#include <string>

#include "qncore/ref_counted.h"
#include "qncore/string_slice.h"
#include "qncore/string_trace_data.h"

namespace qnuri {

/// The invalid components of a URI; a fully valid one has none of the bits.
enum UriFlags : std::uint32_t {
    invalid_scheme = 1,
    invalid_scheme_specific_part = 2, ///< set with any of authority, path and query
    invalid_fragment = 4,
    invalid_authority = 16,
    invalid_path = 32,
    invalid_query = 64,
};

namespace impl {

/// The shared record of one parsed URI: its text in normal form, the ranges of the components in
/// that text, and which of them are invalid. It is filled once and immutable from then on.
struct UriParseData : qncore::RefCounted<qncore::AtomicRefCount> {
    /// Shows a record, or a part of it, in a trace.
    class TraceData : public qncore::StringTraceData {
      public:
        explicit TraceData(const UriParseData& record) noexcept
            : record_(record) {}

      protected:
        const UriParseData& record() const noexcept { return record_; }
        ~TraceData() = default;

      private:
        const UriParseData& record_;
    };

    /// The text up to the end of `schemeSpecificPart`.
    class TraceDataUri final : public TraceData {
      public:
        using TraceData::TraceData;
        std::string_view trace_text() const override;
    };

    /// The whole text.
    class TraceDataUriReference final : public TraceData {
      public:
        using TraceData::TraceData;
        std::string_view trace_text() const override;
    };

    static constexpr std::uint32_t undefined_flags = 0xFFFFFFFF;

    explicit UriParseData(std::string_view source = {})
        : text(source)
        , traceUriReference(*this)
        , traceUri(*this) {}

    /// True when nothing stands before the fragment.
    bool is_empty() const noexcept { return fragment.start() == 0; }
    bool is_undefined() const noexcept { return flags == undefined_flags; }

    /// Tells whether the text has that component; "?" alone is a present, empty query.
    static bool is_present(const qncore::StringRange& component) noexcept {
        return component.count() != 0 && component.start() != qncore::StringRange::npos;
    }
    /// The characters of a range.
    std::string_view view(const qncore::StringRange& range) const noexcept {
        return {text.data() + range.start(), range.count()};
    }
    /// The text without the fragment.
    std::string_view text_before_fragment() const noexcept {
        return {text.data(), schemeSpecificPart.start() + schemeSpecificPart.count()};
    }
    /// Tells whether there is a scheme whose specific part does not begin with "/", as in `tel:1`.
    bool is_opaque() const noexcept {
        return is_present(scheme) && is_present(schemeSpecificPart) &&
               text[schemeSpecificPart.start()] != '/';
    }
    /// The range of the authority without its "//".
    qncore::StringRange bare_authority() const noexcept;

    /// The shared record of no URI at all.
    static const qncore::RefCountPtr<const UriParseData>& undefined_record() noexcept;
    /// The shared record of the empty text.
    static const qncore::RefCountPtr<const UriParseData>& empty_record() noexcept;

    std::string text;
    std::uint32_t flags = 0;                ///< of UriFlags, or `undefined_flags`
    qncore::StringRange scheme;             ///< with the trailing ":"
    qncore::StringRange schemeSpecificPart; ///< from the authority to the end of the query
    qncore::StringRange fragment;           ///< with the leading "#"
    qncore::StringRange authority;          ///< with "//" where the text has it
    qncore::StringRange path;
    qncore::StringRange query; ///< with the leading "?"
    TraceDataUriReference traceUriReference;
    TraceDataUri traceUri;
};

} // namespace impl
} // namespace qnuri
