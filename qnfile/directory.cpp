#include "qnfile/directory.h"

#include <algorithm>

#include "platform/directory.h"
#include "platform/file_system.h"
#include "platform/path.h"
#include "platform/process_paths.h"
#include "qncore/system_name.h"
#include "qnfile/errors.h"
#include "qnfile/report.h"

namespace qnfile {
namespace {

using qncore::ErrorComposer;
using qncore::ErrorInfoPtr;

/// The position of the last separator before `end`, or npos.
std::size_t find_last_separator(const std::string& path, std::size_t end) {
    while (end > 0 && !platform::is_separator(path[end - 1])) {
        --end;
    }
    return end != 0 ? end - 1 : std::string::npos;
}

/// The directory part of a path; empty for a path in the root or without a directory.
std::string parent_of(const std::string& path) {
    std::size_t separator = find_last_separator(path, path.size());
    if (separator != std::string::npos && separator + 1 == path.size() && path.size() > 1) {
        separator = find_last_separator(path, separator);
    }
    return separator == std::string::npos ? std::string() : path.substr(0, separator);
}

/// file_status() takes no separator after a name. That of a root or of a drive stays.
std::string without_last_separator(const std::string& path) {
    const std::size_t size = path.size();
    const bool is_after_name = size > 1 && platform::is_separator(path[size - 1]) &&
                               !platform::is_separator(path[size - 2]) && path[size - 2] != ':';
    return is_after_name ? path.substr(0, size - 1) : path;
}

void create_one_directory(const std::string& path, int accessMode, ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    const platform::SystemError failure = platform::create_directory(path);
    if (!failure) {
        return;
    }
    const auto location = QN_LOCATION("qnfile::create_directory()");
    const bool exists = failure.is_already_exists();
    // Required: the two brackets at the end of the second message.
    ErrorComposer(exists ? "Failed to create directory because it already exists. Base "
                           "path=\"{@basePath}\" Access mode={@accessMode}"
                         : "Failed to create directory. Base path=\"{@basePath}\" Access "
                           "mode={@accessMode}))")
        .param("basePath", path)
        .param("accessMode", accessMode)
        .create_transfer(error,
                         exists ? error::qnfile_directory_alreadyExists : error::qnfile_directory,
                         location, qncore::ErrorInfo::from_system_error(location, failure));
}

/// A property that an accessible directory must have.
struct Requirement {
    const char* message;
    const qncore::ErrorCode& code;
    bool holds;
};

} // namespace

namespace impl {

void create_directory_recursive(const std::string& path, int accessMode, ErrorInfoPtr* error,
                                int depthLeft) {
    const auto location = QN_LOCATION("qnfile::impl::create_directory_recursive()");
    qncore::check_system_name(path);
    const std::string parent = parent_of(path);
    const auto failure =
        parent.empty() ? platform::SystemError() : platform::file_status(parent).error();
    if (failure.is_not_found() && depthLeft >= 0) {
        create_directory_recursive(parent, accessMode, error, depthLeft - 1);
    } else if (failure.is_not_found()) {
        report_depth(error, "Recursive parent directory limit reached.", location);
    } else if (failure) {
        report(error, error::qnfile_directory_notFound,
               "Failed to get parent directory stats. Full path=\"{@fullPath}\"", "fullPath",
               parent, location, failure);
    }
    if (!holds_error(error)) {
        create_one_directory(path, accessMode, error);
    }
}

} // namespace impl

void create_directory(const std::string& path, int accessMode, ErrorInfoPtr* error,
                      bool recursive) {
    if (recursive) {
        impl::create_directory_recursive(path, accessMode, error, impl::tree_depth);
    } else {
        create_one_directory(path, accessMode, error);
    }
}

void set_current_directory(const std::string& path, ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    if (const auto failure = platform::set_current_directory(path)) {
        impl::report(error, error::qnfile_directory,
                     "Failed to set current directory. Base path=\"{@basePath}\"", "basePath", path,
                     QN_LOCATION("qnfile::set_current_directory()"), failure);
    }
}

std::string get_current_directory(ErrorInfoPtr* error) {
    std::size_t bufferSize = 0;
    const auto directory = platform::current_directory(bufferSize);
    if (!directory) {
        impl::report(error, error::qnfile_directory,
                     "Failed to get current working directory. bufSize={@bufSize}", "bufSize",
                     std::to_string(bufferSize), QN_LOCATION("qnfile::get_current_directory()"),
                     directory.error());
        return {};
    }
    return *directory;
}

bool is_accessible_directory(const std::string& path, DirectoryAccessFlags flags,
                             ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    const auto status = platform::file_status(without_last_separator(path));
    const auto facts = status ? *status : platform::FileStatus();
    const Requirement requirements[] = {
        {"Failed to get file system object attributes. Path: \"{@path}\"",
         error::qnfile_directory_notFound, static_cast<bool>(status)},
        {"File system object exists but is not a directory. Path: \"{@path}\"",
         error::qnfile_directory_notDirectory, facts.is_directory},
        {"Directory exists but is not write-accessible. Path: \"{@path}\"",
         error::qnfile_directory_access_notWrite,
         (flags & access_check_write) == 0 || !facts.is_read_only},
        {"Directory exists but is not hidden. Path: \"{@path}\"",
         error::qnfile_directory_access_notHidden,
         (flags & access_check_hidden) == 0 || facts.is_hidden},
    };
    const auto* failed = std::find_if(std::begin(requirements), std::end(requirements),
                                      [](const Requirement& r) { return !r.holds; });
    if (failed == std::end(requirements)) {
        return true;
    }
    if (error != nullptr) {
        impl::report(error, failed->code, failed->message, "path", path,
                     QN_LOCATION("qnfile::is_accessible_directory()"), status.error());
    }
    return false;
}

} // namespace qnfile
