#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/file.h"
#include "platform/system_error.h"

namespace platform {

/// The last step in the removal of a link, and its error; without an error the link is removed.
struct LinkRemoval {
    enum class Step : std::uint8_t { open, read, remove, remove_directory };
    Step step = Step::open;
    SystemError error;
};

/// The directory in which entries are removed. All paths are full paths; those passed to an anchor
/// of a directory name entries of that directory.
///
/// On Linux an anchor keeps its directory open and reaches the entries only by their last names,
/// without following links. So a removal never leaves the tree, even if a directory or an entry is
/// replaced by a link after the tree was listed. On Windows an anchor is empty and each path is
/// resolved again: a link that existed when the tree was listed is not followed, one that is made
/// later may be.
class RemovalAnchor {
  public:
    /// For paths of any directory.
    RemovalAnchor() noexcept = default;
    RemovalAnchor(RemovalAnchor&& other) noexcept
        : directory_(std::exchange(other.directory_, invalid_file)) {}
    RemovalAnchor(const RemovalAnchor&) = delete;
    RemovalAnchor& operator=(const RemovalAnchor&) = delete;
    RemovalAnchor& operator=(RemovalAnchor&&) = delete;
    ~RemovalAnchor() { close_file(directory_); }

    /// Opens an anchor of a directory. Unless `followLinks`, a link to a directory is_not_found().
    Result<RemovalAnchor> open(const std::string& path, bool followLinks) const;

    /// Removes a file, or on Linux any link. The path is passed to the system unchanged.
    SystemError remove_file(const std::string& path) const;
    /// Removes an empty directory.
    SystemError remove_directory(const std::string& path) const;
    /// Removes a link to a directory but not its target: on Windows a mount point (junction), and
    /// then the empty directory that is left; on Linux a symbolic link, in one step.
    LinkRemoval remove_link(const std::string& path) const;

  private:
    explicit RemovalAnchor(FileHandle directory) noexcept
        : directory_(directory) {}

    FileHandle directory_ = invalid_file;
};

} // namespace platform
