#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/file.h"
#include "platform/system_error.h"

namespace platform {

/// How far the removal of a link came, and why no further; no error means that it is gone.
struct LinkRemoval {
    enum class Step : std::uint8_t { open, read, remove, remove_directory };
    Step step = Step::open;
    SystemError error;
};

/// Where things are removed. All paths are whole paths; those given to an anchor of a directory
/// name entries of that directory.
///
/// On Linux an anchor holds its directory open and reaches its entries by nothing but their last
/// names, none of which is followed when it is a link. So a removal never leaves the tree, also
/// when the directory or an entry has been exchanged for a link since the tree was looked at. On
/// Windows an anchor holds nothing and the paths are resolved anew each time: a link that was
/// there when the tree was looked at is not followed, one that somebody puts there later may be.
class RemovalAnchor {
  public:
    /// Takes any path as it is.
    RemovalAnchor() noexcept = default;
    RemovalAnchor(RemovalAnchor&& other) noexcept
        : directory_(std::exchange(other.directory_, invalid_file)) {}
    RemovalAnchor(const RemovalAnchor&) = delete;
    RemovalAnchor& operator=(const RemovalAnchor&) = delete;
    RemovalAnchor& operator=(RemovalAnchor&&) = delete;
    ~RemovalAnchor() { close_file(directory_); }

    /// An anchor of a directory here; unless `followLinks`, a link to one is_not_found().
    Result<RemovalAnchor> open(const std::string& path, bool followLinks) const;

    /// Removes a file, or on Linux a link to anything. The path goes to the system as it is.
    SystemError remove_file(const std::string& path) const;
    /// Removes an empty directory.
    SystemError remove_directory(const std::string& path) const;
    /// Removes a link to a directory, and leaves alone what it points at: on Windows a mount point
    /// (junction), and the empty directory that it leaves behind; on Linux a symbolic link, all at
    /// once.
    LinkRemoval remove_link(const std::string& path) const;

  private:
    explicit RemovalAnchor(FileHandle directory) noexcept
        : directory_(directory) {}

    FileHandle directory_ = invalid_file;
};

} // namespace platform
