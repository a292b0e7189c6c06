#pragma once

#include <cstdint>
#include <string>

#include "qncore/error_info.h"
#include "qnfile/flags.h"

// Directories as a whole. Paths are UTF-8 (on Linux any bytes); one with an embedded NUL throws
// error.qncore.embeddedNul despite a slot. Failures are errors below error.qnfile.directory with
// the system's error nested; they go to the slot `error`, or are thrown if it is null, unless said
// otherwise.
namespace qnfile {

enum DirectoryRemoveFlags : std::uint32_t {
    remove_empty_only = 0,
    remove_recursive = 1,    ///< removes the content of the directory first
    remove_follow_links = 2, ///< with remove_recursive: the content of linked directories, too
    remove_reserved = 4,     ///< no effect
};
template <>
inline constexpr bool is_flag_set<DirectoryRemoveFlags> = true;

enum DirectoryAccessFlags : std::int32_t {
    access_check_none = 0,
    access_check_read = 1, ///< no effect: every directory passes
    access_check_write = 2,
    access_check_hidden = 4,
};
template <>
inline constexpr bool is_flag_set<DirectoryAccessFlags> = true;

/// Creates a directory; with `recursive` also the missing ones above it, at most 52 in all. An
/// existing directory is error.qnfile.directory.alreadyExists, recursive or not. `accessMode`
/// appears in messages and has no other effect; on Linux the umask decides.
void create_directory(const std::string& path, int accessMode, qncore::ErrorInfoPtr* error,
                      bool recursive);

/// Removes an empty directory.
void remove_directory(const std::string& path, qncore::ErrorInfoPtr* error);

/// Removes a directory; with `remove_recursive` its subdirectories, then its files, then itself.
/// Directories may be at most 51 levels below it. A failure does not restore what has been removed;
/// one while a directory is read is thrown despite a slot. A slot that already holds an error makes
/// this a no-op.
///
/// A link, be it the path or in the tree, is removed and not followed, unless `remove_follow_links`
/// is set. On Linux that holds even if a directory or an entry is replaced by a link during the
/// removal; on Windows it holds for links that existed when the removal listed their directory.
void remove_directory(const std::string& path, DirectoryRemoveFlags flags,
                      qncore::ErrorInfoPtr* error);

void set_current_directory(const std::string& path, qncore::ErrorInfoPtr* error);

/// Returns the path without a separator at the end; empty on failure.
std::string get_current_directory(qncore::ErrorInfoPtr* error);

/// Returns whether the path is a directory with all requested attributes: on Linux it is writable
/// if any account may write, hidden if its name begins with a dot. Never throws for false; a slot
/// that is not null receives the reason.
bool is_accessible_directory(const std::string& path, DirectoryAccessFlags flags,
                             qncore::ErrorInfoPtr* error);

namespace impl {

/// The first `depthLeft`.
inline constexpr int tree_depth = 50;

/// Like create_directory; `depthLeft` limits how many directories above may be missing.
void create_directory_recursive(const std::string& path, int accessMode,
                                qncore::ErrorInfoPtr* error, int depthLeft);

/// Like remove_directory; `depthLeft` limits the depth of directories.
void remove_directory_tree(const std::string& path, DirectoryRemoveFlags flags, int depthLeft,
                           qncore::ErrorInfoPtr* error);

/// Removes a link to a directory but not its target: on Linux a symbolic link, on Windows a mount
/// point. Required: fails for a symbolic link on Windows, since the request names the tag of a
/// mount point.
void remove_win32_reparse_point(const std::string& path, qncore::ErrorInfoPtr* error);

} // namespace impl
} // namespace qnfile
