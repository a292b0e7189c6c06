#include <algorithm>
#include <string_view>

#include "platform/path.h"
#include "platform/process_paths.h"
#include "qncore/error_composer.h"
#include "qnfile/errors.h"
#include "qnfile/file_utilities.h"
#include "qnfile/path_forms.h"
#include "qnuri/parse.h"
#include "qnuri/percent_encoding.h"

namespace qnfile {
namespace {

using qncore::ErrorComposer;
using qncore::ErrorInfoPtr;
using qnuri::Uri;
using qnuri::UriReference;

constexpr int invalid_argument = 22; // EINVAL; required as this number on every system
constexpr const char* filename_from_uri_name = "qnfile::filename_from_uri()";

/// Stands for the drive when a reference is resolved on a system without drives: resolution keeps
/// the first segment of a `file` path as the drive, so it must not be a directory.
constexpr std::string_view root_as_drive = "/.";

bool names_nothing(const UriReference& uri) {
    return uri.is_undefined() ||
           (uri.flags() & (qnuri::invalid_scheme | qnuri::invalid_scheme_specific_part)) != 0;
}

void report(ErrorInfoPtr* error, ErrorComposer& composer) {
    composer.create_transfer_with_nested_errno(
        error, error::qnfile_filename_uri, QN_LOCATION(filename_from_uri_name), invalid_argument);
}

void report(ErrorInfoPtr* error, const char* message, const UriReference& uri) {
    report(error, ErrorComposer(message).param("uri", uri.text()));
}

/// Escapes each byte that has a meaning in a URI. These include ":", as "/a:/" would be taken for a
/// drive, and "\", which would be taken for a separator.
std::string escape_path(std::string_view path) {
    return qnuri::percent_encode(path, qnuri::chars::unreserved | qnuri::chars::slash);
}

std::string with_last_separator(std::string directory) {
    if (!directory.ends_with(platform::preferred_separator)) {
        directory += platform::preferred_separator;
    }
    return directory;
}

std::string current_directory() {
    const auto location = QN_LOCATION("qnfile::get_current_directory_as_uri()");
    const auto directory = platform::runtime_current_directory();
    if (!directory) {
        qncore::throw_error(qncore::ErrorInfo::from_system_error(location, directory.error()));
    }
    if (directory->empty()) {
        qncore::throw_errno(location, invalid_argument);
    }
    return with_last_separator(*directory);
}

/// A reference resolved against the current directory, or undefined.
struct Resolved {
    Uri uri;
    bool has_root_as_drive = false;
};

Resolved resolve(const UriReference& reference, const std::string& directory) {
    if (platform::paths_have_drives) {
        return {qnuri::to_uri(uri_from_filename(directory)).resolve(reference), false};
    }
    const auto base = uri_from_filename(std::string(root_as_drive) + directory);
    return {qnuri::to_uri(base).resolve(reference), !reference.has_authority()};
}

/// Converts a decoded path to the form of the system.
std::string native_path(std::string path, const std::string& host) {
    if (!platform::paths_have_drives) {
        return path;
    }
    if (!host.empty()) {
        path.insert(0, "\\\\" + host);
    } else {
        path = impl::without_slash_before_drive(std::move(path));
    }
    std::replace(path.begin(), path.end(), '/', platform::preferred_separator);
    return path;
}

} // namespace

std::string filename_from_uri(const UriReference& uri, ErrorInfoPtr* error) {
    if (names_nothing(uri)) {
        const auto location = QN_LOCATION(filename_from_uri_name);
        qncore::deliver_error(error, qncore::ErrorInfo::create_with_nested_errno(
                                         error::qnfile_filename_uri,
                                         qncore::SourceString::copy_of(uri.text()), location,
                                         invalid_argument));
        return {};
    }
    Resolved resolved;
    if (!uri.has_scheme()) {
        const std::string directory = current_directory();
        resolved = resolve(uri, directory);
        if (names_nothing(resolved.uri)) {
            report(error,
                   ErrorComposer(
                       "Resolution of URI {@uri} against current directory ({@curdir}) failed")
                       .param("uri", uri.text())
                       .param("curdir", uri_from_filename(directory).text()));
            return {};
        }
    }
    const UriReference& file = uri.has_scheme() ? uri : resolved.uri;
    if (!file.scheme_equals("file", 4)) {
        report(error, "URI must have 'file:' scheme: {@uri}", file);
        return {};
    }
    const std::string host = qnuri::percent_decode(file.authority().view());
    std::string path = qnuri::percent_decode(file.path().view());
    if (resolved.has_root_as_drive) {
        path.erase(0, root_as_drive.size());
    }
    if (host.empty() ? path.empty() : !platform::paths_have_drives) {
        report(error, "URI has an invalid path for a 'file:' scheme URI: {@uri}", file);
        return {};
    }
    return native_path(std::move(path), host);
}

UriReference uri_from_filename(const std::string& filename) {
    if (platform::paths_have_drives) {
        return UriReference(qnuri::uri_from_file_name(filename.data(), filename.size()));
    }
    const std::string text = (filename.starts_with('/') ? "file://" : "") + escape_path(filename);
    return UriReference::parse(text);
}

Uri get_current_directory_as_uri() {
    return qnuri::to_uri(uri_from_filename(current_directory()));
}

Uri get_application_filepath_as_uri() {
    const auto path = platform::application_path();
    if (!path) {
        qncore::throw_error(qncore::ErrorInfo::from_system_error(
            QN_LOCATION("qnfile::get_application_filepath_as_uri()"), path.error()));
    }
    return qnuri::to_uri(uri_from_filename(*path));
}

std::string get_temp_directory() {
    std::string directory = platform::temporary_directory();
    std::replace_if(directory.begin(), directory.end(), platform::is_separator, '/');
    return directory;
}

} // namespace qnfile
