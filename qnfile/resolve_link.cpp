#include "platform/file_operations.h"
#include "platform/path.h"
#include "qncore/error_composer.h"
#include "qncore/system_name.h"
#include "qnfile/directory_entry.h"
#include "qnfile/errors.h"
#include "qnfile/file_utilities.h"

namespace qnfile {
namespace {

using qncore::ErrorInfoPtr;
using qnuri::Uri;
using qnuri::UriReference;

constexpr std::size_t longest_path = 260;

/// Returns the path of an open file and closes it.
platform::FilePath take_path(platform::FileHandle file) {
    platform::FilePath path = platform::path_of_file(file, longest_path);
    platform::close_file(file);
    return path;
}

/// The system may put this prefix before a path with a drive. Required: it is removed everywhere
/// in the path.
void remove_long_path_prefixes(std::string& path) {
    const std::string prefix = "\\\\?\\";
    for (std::size_t place = 0; (place = path.find(prefix, place)) != std::string::npos;) {
        path.erase(place, prefix.size());
    }
}

} // namespace

std::string resolve_link(const std::string& path, ErrorInfoPtr* error) {
    const auto location = QN_LOCATION("qnfile::resolve_link"); // required: without brackets
    qncore::check_system_name(path);
    const auto file = platform::open_link_target(path);
    platform::FilePath target = file ? take_path(*file) : platform::FilePath{{}, 0, file.error()};
    if (target.error && target.length == 0) {
        qncore::deliver_error(error, qncore::ErrorInfo::from_system_error(location, target.error));
        return {};
    }
    if (target.length >= longest_path) {
        qncore::ErrorComposer("Path '{@file}' too long: {@bytes}")
            .param("file", path)
            .param("bytes", target.length)
            .create_transfer(error, error::qnfile_filename_uri, location,
                             qncore::ErrorInfo::from_system_error(location, target.error));
        return {};
    }
    if (platform::paths_have_drives) {
        remove_long_path_prefixes(target.path);
    }
    return std::move(target.path);
}

Uri resolve_link(const UriReference& uri, ErrorInfoPtr* error) {
    ErrorInfoPtr failure;
    const auto entry = DirectoryEntry::create_from_full_path(uri, &failure);
    if (!failure && !entry.is_link()) {
        return qnuri::to_uri(uri);
    }
    const std::string target = failure ? std::string() : resolve_link(entry.full_path(), &failure);
    if (failure) {
        qncore::deliver_error(error, std::move(failure));
        return {};
    }
    if (target.empty()) {
        return {};
    }
    if (target.front() == '/') {
        return qnuri::to_uri(uri_from_filename(target));
    }
    const Uri base = qnuri::to_uri(uri_from_filename(entry.directory()));
    return qnuri::to_uri(qnuri::resolve_text(target.data(), target.size(), base, false));
}

} // namespace qnfile
