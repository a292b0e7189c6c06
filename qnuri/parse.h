#pragma once

#include <cstddef>

#include "qnuri/uri_parse_data.h"

// From texts to URI records. Nothing here fails, whatever the bytes: the flags of the record say
// what is wrong. A length may be `StringRange::npos`, which measures up to the first zero; null
// and empty texts give the empty record.
namespace qnuri {

/// Parses by RFC 3986, appendix A, with rules of their own for `file`, `sip`, `sips`, `tel` and
/// `mailto` (the last four have no fragment), and brings the text to its normal form: the scheme
/// in lower case, escapes of unreserved characters decoded, `file` paths with "/" and a drive in
/// lower case. `plainFile` makes `file` a scheme like any other.
qncore::RefCountPtr<const impl::UriParseData>
parse_uri_reference(const char* text, std::size_t length, bool plainFile);
qncore::RefCountPtr<const impl::UriParseData> parse_uri_reference(const char* text, bool plainFile);

/// Parses a URI, or with `fileNames` also a file name: a text that `is_file_path` becomes a `file`
/// URI, another one that begins with "\" a reference without a scheme, and what is no valid
/// reference as it stands is taken for a relative file name. Characters of a name that a path
/// cannot hold are escaped; what begins with the first "?" stays the query.
qncore::RefCountPtr<const impl::UriParseData>
uri_reference_from_text(const char* text, std::size_t length, bool fileNames);

/// The same as `uri_reference_from_text` with `fileNames`, but that a text that begins with "/" is
/// a file name as one that begins with "\" is.
qncore::RefCountPtr<const impl::UriParseData> uri_from_file_name(const char* text,
                                                                 std::size_t length);

/// Whether a text is a whole Windows path: "\\", "//" with a name and a further "/", or a drive
/// letter, ":" and a separator.
bool is_file_path(const char* begin, const char* end) noexcept;

} // namespace qnuri
