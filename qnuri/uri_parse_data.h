#pragma once

#include <cstdint>
#include <string>

#include "qncore/ref_counted.h"
#include "qncore/string_slice.h"
#include "qncore/string_trace_data.h"

namespace qnuri {

/// What is invalid about a URI; none of the bits for a fully valid one.
enum UriFlags : std::uint32_t {
    invalid_scheme = 1,
    invalid_scheme_specific_part = 2, ///< with any of authority, path and query
    invalid_fragment = 4,
    invalid_authority = 16,
    invalid_path = 32,
    invalid_query = 64,
};

namespace impl {

/// The shared record of one parsed URI: its normal text, the stretches of its components in that
/// text, and which of them are invalid. Filled once, immutable from then on.
struct UriParseData : qncore::RefCounted<qncore::AtomicRefCount> {
    /// Shows a record in a trace, as far as the view reaches.
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

    UriParseData()
        : traceUriReference(*this)
        , traceUri(*this) {}

    /// True when nothing stands before the fragment.
    bool is_empty() const noexcept { return fragment.start() == 0; }
    bool is_undefined() const noexcept { return flags == undefined_flags; }

    /// Whether the text has that component at all; "?" alone is a present, empty query.
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
    /// A scheme whose scheme-specific part does not begin with "/", as in `tel:123`.
    bool is_opaque() const noexcept {
        return is_present(scheme) && is_present(schemeSpecificPart) &&
               text[schemeSpecificPart.start()] != '/';
    }
    /// Where the authority stands without its "//".
    qncore::StringRange bare_authority() const noexcept;

    /// The shared record that says that there is no URI at all.
    static const qncore::RefCountPtr<const UriParseData>& undefined_record();
    /// The shared record of the empty text.
    static const qncore::RefCountPtr<const UriParseData>& empty_record();

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
