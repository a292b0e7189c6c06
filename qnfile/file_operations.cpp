#include "platform/file_operations.h"

#include "platform/directory.h"
#include "platform/removal.h"
#include "qncore/error_composer.h"
#include "qncore/system_name.h"
#include "qnfile/errors.h"
#include "qnfile/file_utilities.h"
#include "qnfile/report.h"

namespace qnfile {
namespace {

using qncore::ErrorInfo;
using qncore::ErrorInfoPtr;
using qnuri::UriReference;

/// Reports a failed operation on one or two files. Both parameters are set, also for one.
void report_file_operation(const char* message, const std::string& source,
                           const std::string& target, ErrorInfoPtr* error,
                           const qncore::SourceLocation& location, platform::SystemError failure) {
    const std::string text =
        std::string(message) + (target.empty()
                                    ? " (Path=\"{@filePathSrc}\")"
                                    : " (PathSrc=\"{@filePathSrc}\" PathDst=\"{@filePathDst}\")");
    qncore::ErrorParams params;
    params.insert("filePathSrc", source);
    params.insert("filePathDst", target);
    qncore::deliver_error(error,
                          ErrorInfo::create(error::qnfile_io, qncore::SourceString::copy_of(text),
                                            std::move(params), location,
                                            ErrorInfo::from_system_error(location, failure)));
}

/// Runs an operation on the file name of a URI, if it has one. The operation reports to a slot of
/// its own, so that an older error in the caller's slot stops nothing.
template <class Operation>
void with_filename(const UriReference& uri, ErrorInfoPtr* error, const Operation& operation) {
    ErrorInfoPtr own;
    const std::string path = filename_from_uri(uri, &own);
    if (!own) {
        operation(path, &own);
    }
    if (own) {
        qncore::deliver_error(error, std::move(own));
    }
}

} // namespace

void copy_file(const std::string& source, const std::string& target, bool failIfExists,
               ErrorInfoPtr* error) {
    qncore::check_system_name(source);
    qncore::check_system_name(target);
    if (const auto failure = platform::copy_file(source, target, failIfExists)) {
        report_file_operation("Could not copy file", source, target, error,
                              QN_LOCATION("qnfile::copy_file()"), failure);
    }
}

void copy_file(const UriReference& source, const UriReference& target, bool failIfExists,
               ErrorInfoPtr* error) {
    with_filename(source, error, [&](const std::string& from, ErrorInfoPtr* slot) {
        with_filename(target, slot, [&](const std::string& to, ErrorInfoPtr* inner) {
            copy_file(from, to, failIfExists, inner);
        });
    });
}

void delete_file(const std::string& path, ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    if (const auto failure = platform::RemovalAnchor().remove_file(path)) {
        report_file_operation("Could not delete file", path, {}, error,
                              QN_LOCATION("qnfile::delete_file()"), failure);
    }
}

void delete_file(const UriReference& uri, ErrorInfoPtr* error) {
    with_filename(uri, error,
                  [](const std::string& path, ErrorInfoPtr* slot) { delete_file(path, slot); });
}

void get_file_timestamp(const std::string& path, std::int64_t* accessed, std::int64_t* modified,
                        ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    const auto status = platform::file_status(path);
    if (!status) {
        report_file_operation("Could not read file attributes", path, {}, error,
                              QN_LOCATION("qnfile::get_file_timestamp()"), status.error());
        return;
    }
    if (accessed != nullptr) {
        *accessed = status->accessed;
    }
    if (modified != nullptr) {
        *modified = status->modified;
    }
}

void get_file_timestamp(const UriReference& uri, std::int64_t* accessed, std::int64_t* modified,
                        ErrorInfoPtr* error) {
    with_filename(uri, error, [&](const std::string& path, ErrorInfoPtr* slot) {
        get_file_timestamp(path, accessed, modified, slot);
    });
}

void set_file_timestamp(const std::string& path, const std::int64_t* accessed,
                        const std::int64_t* modified, ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    const platform::TimesChange change = platform::set_file_times(path, accessed, modified);
    if (change.error) {
        report_file_operation(
            change.opened ? "Could not set file time" : "Could not open file to be modified", path,
            {}, error, QN_LOCATION("qnfile::set_file_timestamp()"), change.error);
    }
}

void set_file_timestamp(const UriReference& uri, const std::int64_t* accessed,
                        const std::int64_t* modified, ErrorInfoPtr* error) {
    with_filename(uri, error, [&](const std::string& path, ErrorInfoPtr* slot) {
        set_file_timestamp(path, accessed, modified, slot);
    });
}

std::uint64_t query_file_size(const std::string& path, ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    const auto size = platform::file_size_by_name(path);
    if (!size) {
        impl::report(error, error::qnfile_io, "Can't determine the size of file '{@filePath}'",
                     "filePath", path, QN_LOCATION("qnfile::query_file_size()"), size.error());
        return 0;
    }
    return *size;
}

std::uint64_t query_file_size(const UriReference& uri, ErrorInfoPtr* error) {
    std::uint64_t size = 0;
    with_filename(uri, error, [&](const std::string& path, ErrorInfoPtr* slot) {
        size = query_file_size(path, slot);
    });
    return size;
}

} // namespace qnfile
