#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

#include "qnuri/char_classes.h"
#include "qnuri/uri_parse_data.h"

namespace qnuri::impl {

/// Which rules a scheme has. `sips` counts as `sip`.
enum class SchemeKind : std::uint32_t { generic, file, sip, tel, mailto };

/// One parse: fills a fresh record with the normal form of a text, its ranges and its flags.
class UriParser {
  public:
    explicit UriParser(UriParseData& record) noexcept
        : record_(record) {}

    void parse(std::string_view text, bool plainFile);

  private:
    // The rules, each over what stands between the scheme and the fragment.
    void parse_generic(std::string_view source);
    void parse_file(std::string_view source);
    void parse_sip(std::string_view source);
    void parse_tel(std::string_view source);
    void parse_mailto(std::string_view source);

    /// Appends the source with the escapes of those characters decoded, and makes it a component.
    void take(qncore::StringRange UriParseData::*component, std::string_view source,
              CharClass decoded = unreserved);
    qncore::StringRange written_since(std::size_t start) const noexcept {
        return {start, record_.text.size() - start};
    }

    void complete_drive(std::size_t start);
    std::size_t normalise_host(std::size_t start);
    void normalise_drive(std::size_t path);
    void append_sip_params(std::string_view params);
    void shrink();

    void check();
    bool valid_authority() const noexcept;
    bool valid_path() const noexcept;

    UriParseData& record_;
    SchemeKind schemeKind_ = SchemeKind::generic;
};

/// Appends the source; an escape whose byte is of the class becomes that byte, every other and
/// whatever is malformed stays as it stands (RFC 3986, 6.2.2.2, for `unreserved`).
void append_decoding(std::string& text, std::string_view source, CharClass decoded);

/// Appends the source with everything escaped, by lower-case digits, that is not of the class or
/// must always be escaped.
void append_escaped(std::string& text, std::string_view source, CharClass kept);

/// Where that character stands, or the end.
inline std::size_t find_or_end(std::string_view text, char c, std::size_t start = 0) noexcept {
    return std::min(text.find(c, start), text.size());
}

} // namespace qnuri::impl
