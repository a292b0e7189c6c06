#include "platform/key_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/posix/descriptor.h"
#include "platform/posix/last_error.h"
#include "platform/posix/opening.h"
#include "platform/posix/share_locks.h"
#include "platform/seams.h"

namespace platform {
namespace {

constexpr mode_t owner_only = 0600;
constexpr mode_t owner_and_reading_group = 0640;
constexpr mode_t all_write_bits = 0222;

SystemError create_key_file(const std::string& path) {
    const Result<bool> shared = is_shared_by_group(path);
    return shared ? create_with_mode(path, *shared ? owner_and_reading_group : owner_only)
                  : shared.error();
}

Result<FileHandle> open_existing_key_file(const std::string& path) {
    const Result<int> opened = open_admissible(path, O_RDWR);
    if (!opened) {
        return opened.error();
    }
    Descriptor file(*opened);
    if (const SystemError refusal =
            take_share_locks(file.get(), FileAccess::read_write, FileSharing::read)) {
        return refusal;
    }
    return FileHandle{file.release()};
}

} // namespace

Result<FileHandle> open_key_file(const std::string& path) {
    PLATFORM_SEAM(open);
    const Result<FileHandle> opened = open_existing_key_file(path);
    if (!opened.error().is_not_found()) {
        return opened;
    }
    if (const SystemError error = create_key_file(path)) {
        return error;
    }
    const Result<FileHandle> made = open_existing_key_file(path);
    if (!made) {
        ::unlink(path.c_str());
    }
    return made;
}

SystemError set_key_file_writable(const std::string& path, bool writable) {
    PLATFORM_SEAM(set_mode);
    struct stat status = {};
    if (::stat(path.c_str(), &status) != 0) {
        return last_error();
    }
    const mode_t mode = status.st_mode & 07777;
    const mode_t wanted = writable ? mode | S_IWUSR : mode & ~all_write_bits;
    return error_of(::chmod(path.c_str(), wanted));
}

bool is_open_to_others(const std::string& path) {
    struct stat status = {};
    return ::stat(path.c_str(), &status) == 0 && (status.st_mode & S_IRWXO) != 0;
}

} // namespace platform
