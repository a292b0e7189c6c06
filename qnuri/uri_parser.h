#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "qnuri/decoding_pass.h"
#include "qnuri/uri_parse_data.h"

namespace qnuri::impl {

/// Which rules a scheme has. `sips` counts as `sip`.
enum class SchemeKind : std::uint32_t { generic, file, sip, tel, mailto };

/// A component that the parser takes in one piece.
struct Component {
    qncore::StringRange UriParseData::*range;
    UriFlags flag;          ///< set if it is invalid
    chars::CharClass plain; ///< it is valid if it holds only these and escapes
};

inline constexpr Component path_component{&UriParseData::path, invalid_path,
                                          chars::unreserved | chars::path_punctuation};
inline constexpr Component query_component{&UriParseData::query, invalid_query,
                                           chars::unreserved | chars::reserved};
inline constexpr Component fragment_component{&UriParseData::fragment, invalid_fragment,
                                              chars::unreserved | chars::reserved};

/// One parse: brings the text of a fresh record to its normal form and sets its ranges and flags.
class UriParser {
  public:
    explicit UriParser(UriParseData& record) noexcept
        : record_(record)
        , source_(record.text) {}

    void parse(bool plainFile);

  private:
    void take_scheme(bool plainFile);
    // The rules, each for the text between the scheme and the fragment.
    void parse_generic();
    void parse_file();
    void parse_sip();
    void parse_tel();
    void parse_mailto();

    /// Takes a component up to the first of `ends`, and decodes unreserved characters after its
    /// first `prefix` characters.
    void take(const Component& component, chars::CharClass ends, std::size_t prefix = 0) {
        const std::size_t start = source_.written();
        source_.keep(prefix);
        if (source_.decode_until(ends, chars::unreserved, component.plain)) {
            known_valid_ |= component.flag;
        }
        record_.*component.range = written_since(start);
    }
    void take_authority(chars::CharClass ends, std::size_t prefix = 0);
    bool keep_host(chars::CharClass ends);
    qncore::StringRange written_since(std::size_t start) const noexcept {
        return {start, source_.written() - start};
    }

    void complete_drive(std::size_t start);
    std::size_t normalise_host(std::size_t start);
    void normalise_drive(std::size_t path);
    void take_sip_params();

    void check();
    bool valid_authority() const noexcept;
    bool valid_path() const noexcept;

    UriParseData& record_;
    DecodingPass source_;
    SchemeKind schemeKind_ = SchemeKind::generic;
    std::uint32_t known_valid_ = 0; ///< the bits of the components that need no check
};

/// Returns a caller's text. Null is the empty text; a length of npos measures it.
inline std::string_view measured(const char* text, std::size_t length) noexcept {
    if (text == nullptr) {
        return {};
    }
    return {text, length == qncore::StringRange::npos ? std::strlen(text) : length};
}

} // namespace qnuri::impl
