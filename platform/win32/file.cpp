#include "platform/file.h"

#include "platform/seams.h"
#include "platform/win32/handle.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

DWORD access_of(FileAccess access) {
    switch (access) {
    case FileAccess::read:
        return GENERIC_READ;
    case FileAccess::write:
        return GENERIC_WRITE;
    case FileAccess::read_write:
        break;
    }
    return GENERIC_READ | GENERIC_WRITE;
}

/// Required: every value shares deleting.
DWORD share_mode_of(FileSharing sharing) {
    switch (sharing) {
    case FileSharing::read_write:
        return FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    case FileSharing::read:
        return FILE_SHARE_READ | FILE_SHARE_DELETE;
    case FileSharing::write:
        return FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    case FileSharing::none:
        break;
    }
    return FILE_SHARE_DELETE;
}

DWORD disposition_of(FileDisposition disposition) {
    switch (disposition) {
    case FileDisposition::create_new:
        return CREATE_NEW;
    case FileDisposition::create_always:
        return CREATE_ALWAYS;
    case FileDisposition::open_always:
        return OPEN_ALWAYS;
    case FileDisposition::open_existing:
        return OPEN_EXISTING;
    case FileDisposition::truncate_existing:
        break;
    }
    return TRUNCATE_EXISTING;
}

DWORD flags_of(FileHints hints) {
    return FILE_ATTRIBUTE_NORMAL | (hints.sequential_scan ? FILE_FLAG_SEQUENTIAL_SCAN : 0) |
           (hints.random_access ? FILE_FLAG_RANDOM_ACCESS : 0) |
           (hints.write_through ? FILE_FLAG_WRITE_THROUGH : 0) |
           (hints.overlapped ? FILE_FLAG_OVERLAPPED : 0);
}

bool is_pending(DWORD error) {
    return error == ERROR_IO_PENDING || error == ERROR_IO_INCOMPLETE;
}

LARGE_INTEGER large(std::int64_t value) {
    LARGE_INTEGER number;
    number.QuadPart = value;
    return number;
}

template <class T>
Result<T> result_of(BOOL done, T value) {
    return done ? Result<T>(value) : Result<T>(last_error());
}

} // namespace

Result<FileHandle> open_handle(const std::string& name, DWORD access, DWORD shareMode,
                               DWORD disposition, DWORD flags) {
    PLATFORM_SEAM(open);
    const HANDLE handle =
        ::CreateFileW(wide(name).c_str(), access, shareMode, nullptr, disposition, flags, nullptr);
    return result_of(handle != INVALID_HANDLE_VALUE, reinterpret_cast<FileHandle>(handle));
}

Result<FileHandle> open_file(const std::string& name, FileAccess access,
                             FileDisposition disposition, FileSharing sharing, FileHints hints) {
    return open_handle(name, access_of(access), share_mode_of(sharing), disposition_of(disposition),
                       flags_of(hints));
}

Result<FileHandle> open_input(const std::string& name) {
    return open_handle(name, GENERIC_READ, share_mode_of(FileSharing::read_write), OPEN_EXISTING);
}

void close_file(FileHandle file) noexcept {
    if (file != invalid_file) {
        ::CloseHandle(handle_of(file));
    }
}

Result<std::uint32_t> read_file(FileHandle file, void* buffer, std::uint32_t count) {
    PLATFORM_SEAM(read);
    DWORD done = 0;
    const BOOL success = ::ReadFile(handle_of(file), buffer, count, &done, nullptr);
    return result_of<std::uint32_t>(success, done);
}

Result<std::uint32_t> write_file(FileHandle file, const void* buffer, std::uint32_t count) {
    if (take_failure(Call::write)) {
        if (seams().failure) {
            return seams().failure;
        }
        count -= count != 0 ? 1 : 0;
    }
    DWORD done = 0;
    const BOOL success = ::WriteFile(handle_of(file), buffer, count, &done, nullptr);
    return result_of<std::uint32_t>(success, done);
}

Result<std::uint32_t> read_file_at(FileHandle file, std::uint64_t position, void* buffer,
                                   std::uint32_t count) {
    PLATFORM_SEAM(read);
    OVERLAPPED place = {};
    place.Offset = static_cast<DWORD>(position);
    place.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD done = 0;
    BOOL success = ::ReadFile(handle_of(file), buffer, count, &done, &place);
    // On an overlapped handle the transfer may be pending; it must not outlive `place` and
    // `buffer`.
    while (!success && is_pending(::GetLastError())) {
        success = ::GetOverlappedResult(handle_of(file), &place, &done, TRUE);
    }
    return result_of<std::uint32_t>(success, done);
}

Result<std::uint64_t> seek_file(FileHandle file, std::int64_t offset, SeekMethod method) {
    PLATFORM_SEAM(seek);
    const DWORD from = method == SeekMethod::begin     ? FILE_BEGIN
                       : method == SeekMethod::current ? FILE_CURRENT
                                                       : FILE_END;
    LARGE_INTEGER place = {};
    const BOOL success = ::SetFilePointerEx(handle_of(file), large(offset), &place, from);
    return result_of(success, static_cast<std::uint64_t>(place.QuadPart));
}

Result<std::uint64_t> file_size(FileHandle file) {
    PLATFORM_SEAM(size);
    LARGE_INTEGER size = {};
    const BOOL success = ::GetFileSizeEx(handle_of(file), &size);
    return result_of(success, static_cast<std::uint64_t>(size.QuadPart));
}

SystemError set_end_of_file(FileHandle file) {
    PLATFORM_SEAM(set_end);
    return error_of(::SetEndOfFile(handle_of(file)));
}

SystemError flush_file(FileHandle file) {
    PLATFORM_SEAM(flush);
    return error_of(::FlushFileBuffers(handle_of(file)));
}

} // namespace platform
