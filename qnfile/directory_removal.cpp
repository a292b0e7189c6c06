#include <vector>

#include "platform/removal.h"
#include "qncore/system_name.h"
#include "qnfile/directory.h"
#include "qnfile/directory_sequence.h"
#include "qnfile/errors.h"
#include "qnfile/report.h"

namespace qnfile {
namespace {

using impl::holds_error;
using impl::report;
using impl::report_depth;
using platform::RemovalAnchor;
using qncore::ErrorInfoPtr;

constexpr const char* remove_directory_name = "qnfile::remove_directory()";

/// The entries of that type, all read before anything is removed.
std::vector<DirectoryEntry> entries_of(const std::string& path, DirectoryEntryType type,
                                       ErrorInfoPtr* error) {
    std::vector<DirectoryEntry> entries;
    const DirectorySequence sequence(path.data(), path.size(), error);
    for (auto entry = sequence.begin(error); entry != sequence.end(); ++entry) {
        if ((entry->type() & type) != 0) {
            entries.push_back(*entry);
        }
    }
    return entries;
}

bool is_link(const std::string& path) {
    ErrorInfoPtr ignored;
    const auto entry = DirectoryEntry::create_from_full_path(path, &ignored);
    return entry && entry.is_link();
}

void remove_link(const RemovalAnchor& anchor, const std::string& path, ErrorInfoPtr* error) {
    static constexpr const char* messages[] = {
        "Failed to open file for reparse point removal. Path=\"{@path}\"",
        "Failed to get reparse point data. Path=\"{@path}\"",
        "Failed to remove reparse point. Path=\"{@path}\"",
        "Failed to remove directory after removing reparse point. Base path=\"{@path}\"",
    };
    const platform::LinkRemoval removal = anchor.remove_link(path);
    if (removal.error) {
        report(error, error::qnfile_directory, messages[static_cast<std::size_t>(removal.step)],
               "path", path, QN_LOCATION("qnfile::impl::remove_win32_reparse_point()"),
               removal.error);
    }
}

void remove_files(const RemovalAnchor& anchor, const std::string& path, ErrorInfoPtr* error) {
    for (const DirectoryEntry& entry : entries_of(path, entry_file, error)) {
        const std::string file = entry.full_path();
        if (const auto failure = anchor.remove_file(file)) {
            report(error, error::qnfile_directory, "Failed to delete file (path={@path})", "path",
                   file, QN_LOCATION(remove_directory_name), failure);
            return;
        }
    }
}

void remove_tree(const RemovalAnchor& parent, const std::string& path, DirectoryRemoveFlags flags,
                 int depthLeft, ErrorInfoPtr* error);

void remove_subdirectories(const RemovalAnchor& anchor,
                           const std::vector<DirectoryEntry>& directories,
                           DirectoryRemoveFlags flags, int depthLeft, ErrorInfoPtr* error) {
    for (const DirectoryEntry& entry : directories) {
        if (entry.name() == "." || entry.name() == "..") {
            continue;
        }
        if (depthLeft < 0) {
            report_depth(error, "Recursive child directory limit reached.",
                         QN_LOCATION(remove_directory_name));
        } else if (entry.is_link() && (flags & remove_follow_links) == 0) {
            remove_link(anchor, entry.full_path(), error);
        } else {
            remove_tree(anchor, entry.full_path(), flags, depthLeft - 1, error);
        }
        if (holds_error(error)) {
            return;
        }
    }
}

void report_directory(const std::string& path, ErrorInfoPtr* error, platform::SystemError failure) {
    report(error, error::qnfile_directory, "Failed to remove directory. Base path=\"{@path}\"",
           "path", path, QN_LOCATION(remove_directory_name), failure);
}

/// Empties a directory through an anchor. Leaves what is no longer a directory, or is a link to
/// one, unchanged.
void remove_content(const RemovalAnchor& parent, const std::string& path,
                    DirectoryRemoveFlags flags, int depthLeft, ErrorInfoPtr* error) {
    const auto directories = entries_of(path, entry_directory, error);
    if (holds_error(error)) {
        return;
    }
    const auto anchor = parent.open(path, (flags & remove_follow_links) != 0);
    if (!anchor) {
        if (!anchor.error().is_not_found()) {
            report_directory(path, error, anchor.error());
        }
        return;
    }
    remove_subdirectories(*anchor, directories, flags, depthLeft, error);
    if (!holds_error(error)) {
        remove_files(*anchor, path, error);
    }
}

void remove_tree(const RemovalAnchor& parent, const std::string& path, DirectoryRemoveFlags flags,
                 int depthLeft, ErrorInfoPtr* error) {
    const bool follows = (flags & remove_follow_links) != 0;
    if ((flags & remove_recursive) != 0 && !holds_error(error) && (follows || !is_link(path))) {
        remove_content(parent, path, flags, depthLeft, error);
    }
    if (holds_error(error)) {
        return;
    }
    const auto entry = DirectoryEntry::create_from_full_path(path, error);
    if (holds_error(error)) {
        return;
    }
    if (entry.is_link()) {
        remove_link(parent, path, error);
    } else if (const auto failure = parent.remove_directory(path)) {
        report_directory(path, error, failure);
    }
}

} // namespace

void remove_directory(const std::string& path, ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    if (const auto failure = RemovalAnchor().remove_directory(path)) {
        report(error, error::qnfile_directory,
               "Failed to remove directory. Base path=\"{@basePath}\"", "basePath", path,
               QN_LOCATION(remove_directory_name), failure);
    }
}

void remove_directory(const std::string& path, DirectoryRemoveFlags flags, ErrorInfoPtr* error) {
    impl::remove_directory_tree(path, flags, impl::tree_depth, error);
}

namespace impl {

void remove_directory_tree(const std::string& path, DirectoryRemoveFlags flags, int depthLeft,
                           ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    remove_tree(RemovalAnchor(), path, flags, depthLeft, error);
}

void remove_win32_reparse_point(const std::string& path, ErrorInfoPtr* error) {
    qncore::check_system_name(path);
    remove_link(RemovalAnchor(), path, error);
}

} // namespace impl
} // namespace qnfile
