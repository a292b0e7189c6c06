#include "qnuri/uri_parse_data.h"

#include <cstddef>
#include <new>

namespace qnuri::impl {

std::string_view UriParseData::TraceDataUri::trace_text() const {
    return record().text_before_fragment();
}

std::string_view UriParseData::TraceDataUriReference::trace_text() const {
    return record().text;
}

qncore::StringRange UriParseData::bare_authority() const noexcept {
    if (is_opaque()) {
        return authority;
    }
    constexpr std::size_t slashes = 2;
    return authority.count() >= slashes ? authority.subrange(slashes, authority.count())
                                        : authority.subrange(0, 0);
}

namespace {

/// A record that lives as long as the process. It takes no memory, so that making it cannot fail.
template <std::uint32_t Flags>
const qncore::RefCountPtr<const UriParseData>& shared_record() noexcept {
    struct Shared : UriParseData {
        Shared() noexcept { flags = Flags; }
        void destroy() const noexcept override {}
    };
    alignas(Shared) static std::byte storage[sizeof(Shared)];
    static const qncore::RefCountPtr<const UriParseData> record(new (storage) Shared);
    return record;
}

} // namespace

const qncore::RefCountPtr<const UriParseData>& UriParseData::undefined_record() noexcept {
    return shared_record<undefined_flags>();
}

const qncore::RefCountPtr<const UriParseData>& UriParseData::empty_record() noexcept {
    return shared_record<0>();
}

} // namespace qnuri::impl
