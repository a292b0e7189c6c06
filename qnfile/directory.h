#pragma once

#include <cstdint>
#include <string>

#include "qncore/error_info.h"

// Directories as a whole. Paths are UTF-8 (on Linux any bytes); one with an embedded zero throws.
// Failures are errors below error.qnfile.directory with the system's error nested; they go to the
// slot `error`, or are thrown where it is null, unless said otherwise.
namespace qnfile {

enum DirectoryRemoveFlags : std::uint32_t {
    remove_empty_only = 0,
    remove_recursive = 1,    ///< what is in the directory goes first
    remove_follow_links = 2, ///< with recursive: so does what is behind a link to a directory
    remove_reserved = 4,     ///< without effect
};

enum DirectoryAccessFlags : std::int32_t {
    access_check_read = 1, ///< without effect: every directory passes
    access_check_write = 2,
    access_check_hidden = 4,
};

/// Creates a directory, with `recursive` also the missing ones above it, at most 52 in all. One
/// that is there already is an error.qnfile.directory.alreadyExists, recursive or not. `accessMode`
/// is told in messages and has no other effect; on Linux the umask decides.
void create_directory(const std::string& path, int accessMode, qncore::ErrorInfoPtr* error,
                      bool recursive);

/// Removes an empty directory.
void remove_directory(const std::string& path, qncore::ErrorInfoPtr* error);

/// Removes a directory; with `remove_recursive` its subdirectories, then its files, then itself.
/// Directories may lie at most 51 levels below it. What was removed before a failure stays
/// removed.
///
/// A link, be it the path itself or in the tree, is removed without a look at what is behind it,
/// unless `remove_follow_links` is set. On Linux that holds also when somebody exchanges a
/// directory or an entry for a link while the removal runs. On Windows it holds for links that
/// were there when the removal came to their directory.
void remove_directory(const std::string& path, DirectoryRemoveFlags flags,
                      qncore::ErrorInfoPtr* error);

void set_current_directory(const std::string& path, qncore::ErrorInfoPtr* error);

/// As the system gives it, without a separator at its end; empty on failure.
std::string get_current_directory(qncore::ErrorInfoPtr* error);

/// Whether the path is a directory of which all that is asked for holds, by its attributes: on
/// Linux it is writable when any account may write, hidden when its name begins with a dot. Never
/// throws for a mere no; a slot, where there is one, gets the reason.
bool is_accessible_directory(const std::string& path, DirectoryAccessFlags flags,
                             qncore::ErrorInfoPtr* error);

namespace impl {

/// As create_directory; `depthLeft` bounds how many directories above may be missing.
void create_directory_recursive(const std::string& path, int accessMode,
                                qncore::ErrorInfoPtr* error, int depthLeft);

/// As remove_directory; `depthLeft` bounds how deep directories may lie. A slot that holds an
/// error already stops it at once.
void remove_directory_tree(const std::string& path, DirectoryRemoveFlags flags, int depthLeft,
                           qncore::ErrorInfoPtr* error);

/// Removes a link to a directory without touching what it points at: on Linux a symbolic link. On
/// Windows mount points only; required: a symbolic link is refused by the system, since the
/// request names the tag of a mount point.
void remove_win32_reparse_point(const std::string& path, qncore::ErrorInfoPtr* error);

} // namespace impl
} // namespace qnfile
