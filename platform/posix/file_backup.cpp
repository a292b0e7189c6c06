#include "platform/file_backup.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "platform/file.h"
#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/opening.h"
#include "platform/posix/retry.h"

namespace platform {
namespace {

constexpr mode_t permissions = 07777;
constexpr mode_t owner_only = 0600;
constexpr mode_t owner_permissions = 0700;

/// The file that will be the target. If the file system allows it, the file has no name until
/// finish(), so that a process that is killed leaves nothing behind.
class NewFile {
  public:
    explicit NewFile(const std::string& target)
        : target_(target)
        , name_(target + ".new")
        , descriptor_(open_nameless(target))
        , has_name_(descriptor_ < 0) {
        if (has_name_) {
            ::unlink(name_.c_str()); // a process that was killed may have left it
            descriptor_ = create();
        }
        error_ = descriptor_ < 0 ? last_error() : SystemError();
    }
    NewFile(const NewFile&) = delete;
    NewFile& operator=(const NewFile&) = delete;
    ~NewFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
            if (has_name_) {
                ::unlink(name_.c_str());
            }
        }
    }

    SystemError error() const noexcept { return error_; }

    SystemError take_attributes_of(const struct stat& source) {
        mode_t mode = source.st_mode & permissions;
        if (::fchown(descriptor_, source.st_uid, source.st_gid) != 0 &&
            ::fchown(descriptor_, static_cast<uid_t>(-1), source.st_gid) != 0) {
            mode &= owner_permissions;
        }
        return error_of(::fchmod(descriptor_, mode));
    }

    FileHandle handle() const noexcept { return descriptor_; }

    SystemError finish() {
        SystemError error = flush_file(descriptor_);
        error = error ? error : take_name();
        error = error ? error : rename_over(name_, target_);
        if (!error) {
            ::close(std::exchange(descriptor_, -1));
        }
        return error;
    }

  private:
    SystemError take_name() {
        if (has_name_) {
            return {};
        }
        ::unlink(name_.c_str());
        const SystemError error = error_of(give_name(descriptor_, name_));
        has_name_ = !error;
        return error;
    }

    int create() {
        constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC;
        return retry([&] { return ::open(name_.c_str(), flags, owner_only); });
    }

    const std::string& target_;
    std::string name_;
    int descriptor_;
    bool has_name_;
    SystemError error_;
};

SystemError copy_open(FileHandle source, const std::string& target) {
    struct stat status = {};
    if (::fstat(static_cast<int>(source), &status) != 0) {
        return last_error();
    }
    NewFile copy(target);
    SystemError error = copy.error();
    error = error ? error : copy.take_attributes_of(status);
    error = error ? error : copy_rest(source, copy.handle());
    return error ? error : copy.finish();
}

} // namespace

Result<std::string> real_path(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr),
                                                               &std::free);
    if (!resolved) {
        return last_error();
    }
    return std::string(resolved.get());
}

SystemError copy_whole(const std::string& source, const std::string& target) {
    const auto file = open_file(source, FileAccess::read, FileDisposition::open_existing,
                                FileSharing::read, {.sequential_scan = true});
    if (!file) {
        return file.error();
    }
    const SystemError error = copy_open(*file, target);
    close_file(*file);
    return error;
}

SystemError write_whole(const std::string& target, std::string_view content) {
    NewFile file(target);
    SystemError error = file.error();
    error = error ? error : write_all(file.handle(), content);
    return error ? error : file.finish();
}

SystemError rename_over(const std::string& source, const std::string& target) {
    if (const SystemError error = error_of(std::rename(source.c_str(), target.c_str()))) {
        return error;
    }
    // Flushes the new name to the device, if the file system can. Allocates no memory.
    std::array<char, PATH_MAX> directory{'.'};
    const std::size_t length = target.rfind('/') + 1;
    std::copy_n(target.begin(), std::min(length, directory.size() - 1), directory.begin());
    const Descriptor opened(
        retry([&] { return ::open(directory.data(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    retry([&] { return ::fsync(opened.get()); });
    return {};
}

} // namespace platform
