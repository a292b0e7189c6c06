#pragma once

#include <string>
#include <utility>
#include <vector>

#include "platform/file.h"

/// An open file that closes itself.
class OpenFile {
  public:
    explicit OpenFile(const platform::Result<platform::FileHandle>& result)
        : handle_(result ? *result : platform::invalid_file)
        , error_(result.error()) {}
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { platform::close_file(handle_); }

    explicit operator bool() const { return handle_ != platform::invalid_file; }
    platform::FileHandle get() const { return handle_; }
    platform::SystemError error() const { return error_; }

  private:
    platform::FileHandle handle_;
    platform::SystemError error_;
};

/// A way to open a file, as a row of the table of share modes.
struct Opener {
    platform::FileAccess access;
    platform::FileSharing sharing;

    bool reads() const { return access != platform::FileAccess::write; }
    bool writes() const { return access != platform::FileAccess::read; }
    bool lets_read() const {
        return sharing == platform::FileSharing::read_write ||
               sharing == platform::FileSharing::read;
    }
    bool lets_write() const {
        return sharing == platform::FileSharing::read_write ||
               sharing == platform::FileSharing::write;
    }
    bool admits(const Opener& other) const {
        return (lets_read() || !other.reads()) && (lets_write() || !other.writes());
    }

    OpenFile
    open(const std::string& name,
         platform::FileDisposition disposition = platform::FileDisposition::open_existing) const {
        return OpenFile(platform::open_file(name, access, disposition, sharing, {}));
    }
    /// For messages and arguments, such as "1 3".
    std::string text() const {
        return std::to_string(static_cast<int>(access)) + " " +
               std::to_string(static_cast<int>(sharing));
    }
};

/// All twelve.
inline std::vector<Opener> all_openers() {
    std::vector<Opener> openers;
    for (int access = 0; access < 3; ++access) {
        for (int sharing = 0; sharing < 4; ++sharing) {
            openers.push_back({static_cast<platform::FileAccess>(access),
                               static_cast<platform::FileSharing>(sharing)});
        }
    }
    return openers;
}
