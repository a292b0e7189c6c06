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

SystemError result_of(int answer) {
    return answer == 0 ? SystemError() : last_error();
}

/// The file that will be the target. Has no name until finish(), where the file system can do so,
/// so that a process that is killed leaves nothing behind.
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
        return result_of(::fchmod(descriptor_, mode));
    }

    SystemError write(const char* bytes, std::size_t size) {
        while (size > 0) {
            const auto part = static_cast<std::uint32_t>(std::min(size, std::size_t{1} << 20));
            const auto written = write_file(descriptor_, bytes, part);
            if (!written) {
                return written.error();
            }
            bytes += *written;
            size -= *written;
        }
        return {};
    }

    SystemError finish() {
        if (const SystemError error = flush_file(descriptor_)) {
            return error;
        }
        if (const SystemError error = take_name()) {
            return error;
        }
        if (const SystemError error = rename_over(name_, target_)) {
            return error;
        }
        ::close(descriptor_);
        descriptor_ = -1;
        return {};
    }

  private:
    SystemError take_name() {
        if (!has_name_) {
            ::unlink(name_.c_str());
            if (give_name(descriptor_, name_) != 0) {
                return last_error();
            }
            has_name_ = true;
        }
        return {};
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

SystemError copy_content(FileHandle source, NewFile& target) {
    std::array<char, 65536> buffer; // not initialised: every byte is read before it is used
    for (;;) {
        const auto count = read_file(source, buffer.data(), buffer.size());
        if (!count || *count == 0) {
            return count.error();
        }
        if (const SystemError error = target.write(buffer.data(), *count)) {
            return error;
        }
    }
}

SystemError copy_open(FileHandle source, const std::string& target) {
    struct stat status = {};
    if (::fstat(static_cast<int>(source), &status) != 0) {
        return last_error();
    }
    NewFile copy(target);
    SystemError error = copy.error();
    error = error ? error : copy.take_attributes_of(status);
    error = error ? error : copy_content(source, copy);
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
    error = error ? error : file.write(content.data(), content.size());
    return error ? error : file.finish();
}

SystemError rename_over(const std::string& source, const std::string& target) {
    const SystemError error = result_of(std::rename(source.c_str(), target.c_str()));
    if (error) {
        return error;
    }
    // The new name reaches the device with its directory; a file system that cannot is let be.
    std::array<char, PATH_MAX> directory{'.'}; // takes no memory, which might fail too late
    const std::size_t length = target.rfind('/') + 1;
    std::copy_n(target.begin(), std::min(length, directory.size() - 1), directory.begin());
    const Descriptor opened(
        retry([&] { return ::open(directory.data(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
    retry([&] { return ::fsync(opened.get()); });
    return {};
}

} // namespace platform
