#pragma once

#include <cstdint>
#include <string>

#include "qncore/error_info.h"
#include "qnuri/uri.h"

// File names and file URIs (RFC 8089), and operations on single files. Names are UTF-8 (on Linux
// any bytes); one with an embedded NUL throws error.qncore.embeddedNul despite a slot. Other
// failures go to the slot `error`, or are thrown if it is null. Functions that take a reference
// also take a Uri, and report error.qnfile.filename.uri if it names no file.
namespace qnfile {

/// The file name of a `file` URI, escapes decoded; a reference without a scheme is resolved against
/// the current directory first. On Windows `file:///c:/a` returns `c:\a` and `file://server/a`
/// returns `\\server\a`; on Linux the path is the name, and a host is an invalid path. Reports
/// error.qnfile.filename.uri and returns an empty string.
std::string filename_from_uri(const qnuri::UriReference& uri, qncore::ErrorInfoPtr* error);

/// The reverse: a `file` URI for an absolute name, else a relative reference. On Windows the text
/// from a "?" on is a query; on Linux every byte of a name survives the way back.
qnuri::UriReference uri_from_filename(const std::string& filename);

/// Throw the system's error, an `errno` for the current directory. The URI of a directory ends in
/// "/".
qnuri::Uri get_current_directory_as_uri();
qnuri::Uri get_application_filepath_as_uri();

/// The directory for temporary files by the environment, with "/" as separator; empty if the
/// environment names none. On Windows the bytes of the ANSI code page: the other functions here
/// take them only if they are ASCII.
std::string get_temp_directory();

/// Copies content, permissions (Windows: attributes), and time of change. Replaces an existing
/// target, or fails with `failIfExists`. A copy that fails midway leaves no target; one that is
/// refused leaves an existing target unchanged. This and the next three functions report
/// error.qnfile.io with the path, or both paths, as parameters.
void copy_file(const std::string& source, const std::string& target, bool failIfExists,
               qncore::ErrorInfoPtr* error);
void copy_file(const qnuri::UriReference& source, const qnuri::UriReference& target,
               bool failIfExists, qncore::ErrorInfoPtr* error);

/// Removes a file or a link, not the target of a link. A separator at the end of the path is an
/// error.
void delete_file(const std::string& path, qncore::ErrorInfoPtr* error);
void delete_file(const qnuri::UriReference& uri, qncore::ErrorInfoPtr* error);

/// Times of last access and last change of a file or directory, in nanoseconds since 1970-01-01
/// UTC; either pointer may be null. Setting follows links, getting does not. Years after 2262 wrap
/// around. INT64_MAX sets the largest time possible. Windows keeps units of 100 ns; the rest is cut
/// towards zero.
void get_file_timestamp(const std::string& path, std::int64_t* accessed, std::int64_t* modified,
                        qncore::ErrorInfoPtr* error);
void get_file_timestamp(const qnuri::UriReference& uri, std::int64_t* accessed,
                        std::int64_t* modified, qncore::ErrorInfoPtr* error);
void set_file_timestamp(const std::string& path, const std::int64_t* accessed,
                        const std::int64_t* modified, qncore::ErrorInfoPtr* error);
void set_file_timestamp(const qnuri::UriReference& uri, const std::int64_t* accessed,
                        const std::int64_t* modified, qncore::ErrorInfoPtr* error);

/// Size in bytes; follows links. Reports error.qnfile.io, with an `errno` nested also on Windows,
/// and returns 0.
std::uint64_t query_file_size(const std::string& path, qncore::ErrorInfoPtr* error);
std::uint64_t query_file_size(const qnuri::UriReference& uri, qncore::ErrorInfoPtr* error);

/// The full path of a file or of the file that a link leads to; directories fail. Required: an
/// empty file returns an empty string without an error, and a path of 260 characters (Linux: bytes)
/// or more is error.qnfile.filename.uri. For a file that cannot be opened, reports the system's
/// error without another one. On Windows a volume without a drive letter yields the device path.
std::string resolve_link(const std::string& path, qncore::ErrorInfoPtr* error);

/// The URI of the file that a link leads to; undefined on failure and for an empty file. The URI of
/// a path that is not a link is returned unchanged, or undefined if it has no scheme.
qnuri::Uri resolve_link(const qnuri::UriReference& uri, qncore::ErrorInfoPtr* error);

} // namespace qnfile
