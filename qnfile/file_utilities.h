#pragma once

#include <cstdint>
#include <string>

#include "qncore/error_info.h"
#include "qnuri/uri.h"

// File names and file URIs (RFC 8089), and what is done with one file at a stroke. Names are UTF-8
// (on Linux any bytes); one with an embedded zero throws. Failures go to the slot `error`, or are
// thrown where it is null. Whatever takes a reference takes a Uri, too, and reports
// error.qnfile.filename.uri when it names no file.
namespace qnfile {

/// The file name of a `file` URI; a reference without a scheme is resolved against the current
/// directory first. Escapes are decoded. On Windows `file:///c:/a` gives `c:\a` and
/// `file://server/a` gives `\\server\a`; on Linux the path is the name, and a host is an invalid
/// path. Reports error.qnfile.filename.uri and gives an empty text.
std::string filename_from_uri(const qnuri::UriReference& uri, qncore::ErrorInfoPtr* error);

/// The reverse: a `file` URI for an absolute name, else a relative reference. On Windows what
/// begins with a "?" is a query; on Linux every byte of a name comes back as it was.
qnuri::UriReference uri_from_filename(const std::string& filename);

/// These throw the system's error, an `errno` for the current directory. The URI of a directory
/// ends in "/".
qnuri::Uri get_current_directory_as_uri();
qnuri::Uri get_application_filepath_as_uri();

/// Where temporary files belong, with "/" as separator, as the environment tells; empty when it
/// tells nothing of use.
std::string get_temp_directory();

/// Copies content, permissions or attributes, and time of change. An existing target is replaced,
/// or is an error with `failIfExists`. A copy that failed leaves no target behind. These and the
/// next six report error.qnfile.io with both paths as parameters.
void copy_file(const std::string& source, const std::string& target, bool failIfExists,
               qncore::ErrorInfoPtr* error);
void copy_file(const qnuri::UriReference& source, const qnuri::UriReference& target,
               bool failIfExists, qncore::ErrorInfoPtr* error);

/// Removes a file; a link to one, not what it points at.
void delete_file(const std::string& path, qncore::ErrorInfoPtr* error);
void delete_file(const qnuri::UriReference& uri, qncore::ErrorInfoPtr* error);

/// Times of last access and last change, of files and directories, in nanoseconds since 1970-01-01
/// UTC; either pointer may be null. Of a link they are read from the link itself and set on what it
/// points at. Years after 2262 wrap around. INT64_MAX sets the largest time of all. Windows keeps
/// whole 100 ns, cut towards zero.
void get_file_timestamp(const std::string& path, std::int64_t* accessed, std::int64_t* modified,
                        qncore::ErrorInfoPtr* error);
void get_file_timestamp(const qnuri::UriReference& uri, std::int64_t* accessed,
                        std::int64_t* modified, qncore::ErrorInfoPtr* error);
void set_file_timestamp(const std::string& path, const std::int64_t* accessed,
                        const std::int64_t* modified, qncore::ErrorInfoPtr* error);
void set_file_timestamp(const qnuri::UriReference& uri, const std::int64_t* accessed,
                        const std::int64_t* modified, qncore::ErrorInfoPtr* error);

/// Bytes, links followed; 0 after a failure, which has an `errno` nested on Windows, too.
std::uint64_t query_file_size(const std::string& path, qncore::ErrorInfoPtr* error);
std::uint64_t query_file_size(const qnuri::UriReference& uri, qncore::ErrorInfoPtr* error);

/// The full path of the file that a link leads to, or of the file itself; not for directories.
/// Required: an empty file gives an empty text without an error, and a path of 260 characters
/// (Linux: bytes) or more is an error.qnfile.filename.uri. A file that cannot be opened reports the
/// system's error alone. On Windows a volume without a drive letter gives its device path.
std::string resolve_link(const std::string& path, qncore::ErrorInfoPtr* error);

/// The URI of what a link leads to. What is no link is given back, undefined when it has no
/// scheme; so is, on a failure or for an empty file.
qnuri::Uri resolve_link(const qnuri::UriReference& uri, qncore::ErrorInfoPtr* error);

} // namespace qnfile
