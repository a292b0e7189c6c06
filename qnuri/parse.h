#pragma once

#include <cstddef>

#include "qnuri/uri_parse_data.h"

/// From texts to URI records. Most callers want `UriReference::parse` instead.
///
/// Nothing here fails, whatever the bytes: the flags of the record tell which components are
/// invalid. A length of `StringRange::npos` measures the text up to its first zero byte. Null and
/// empty texts give the empty record.
namespace qnuri {

/// Parses after RFC 3986, appendix B, with rules of their own for `file`, `sip`, `sips`, `tel` and
/// `mailto`; the last four have no fragment. The text of the record is the normal form:
/// - the scheme in lower case, and escapes of unreserved characters (RFC 2396, 2.3) decoded;
/// - in `file` URIs "/" for "\", the host and the drive in lower case, "localhost" removed, and
///   three slashes before a drive;
/// - in `sip` URIs the user, password and parameters decoded as RFC 3261 allows, without quotes.
/// `plainFile` makes `file` a scheme like any other.
qncore::RefCountPtr<const impl::UriParseData>
parse_uri_reference(const char* text, std::size_t length, bool plainFile);
qncore::RefCountPtr<const impl::UriParseData> parse_uri_reference(const char* text, bool plainFile);
/// Not a length: it would be taken for `plainFile`.
qncore::RefCountPtr<const impl::UriParseData> parse_uri_reference(const char* text,
                                                                  std::size_t length) = delete;

/// Parses a URI or, with `fileNames`, a file name as well:
/// - a text that `is_file_path` becomes a `file` URI;
/// - any other text that begins with "\" becomes a reference without a scheme;
/// - a text without a scheme whose path is invalid is taken for a relative file name.
/// Characters of a name that a path cannot hold are escaped. The first "?" begins the query, which
/// stays as it is.
qncore::RefCountPtr<const impl::UriParseData>
uri_reference_from_text(const char* text, std::size_t length, bool fileNames);

/// Does the same as `uri_reference_from_text` with `fileNames`, but also takes a text that begins
/// with "/" for a file name.
qncore::RefCountPtr<const impl::UriParseData> uri_from_file_name(const char* text,
                                                                 std::size_t length);

/// Tells whether a text is a whole Windows path. It begins with "\\", with "//", a name and a
/// further "/", or with a drive letter, ":" and a separator.
bool is_file_path(const char* begin, const char* end) noexcept;

} // namespace qnuri
