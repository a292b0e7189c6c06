#include "platform/append_file.h"

#include "platform/win32/handle.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"

namespace platform {
namespace {

constexpr DWORD share_all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// A byte far beyond any end of file, since locked bytes cannot be written on Windows.
OVERLAPPED byte_beyond_the_end(DWORD number) {
    OVERLAPPED place = {};
    place.Offset = number;
    place.OffsetHigh = 0x40000000;
    return place;
}

constexpr DWORD byte_of_appends = 0;
constexpr DWORD byte_of_try_lock = 1;

} // namespace

Result<AppendFile> AppendFile::open(const std::string& name) {
    // With FILE_APPEND_DATA and no FILE_WRITE_DATA the system puts each write at the end.
    const HANDLE handle =
        ::CreateFileW(wide(name).c_str(), FILE_APPEND_DATA | FILE_READ_DATA | SYNCHRONIZE,
                      share_all, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        return last_error();
    }
    AppendFile file(reinterpret_cast<FileHandle>(handle));
    const DWORD type = ::GetFileType(handle);
    if (type != FILE_TYPE_DISK && type != FILE_TYPE_CHAR) {
        return SystemError::windows(ERROR_INVALID_PARAMETER);
    }
    return file;
}

std::size_t AppendFile::append(std::string_view text) noexcept {
    // Finding the end and writing there is one step on a local disk of Windows, but not under Wine
    // or on every share. If the lock fails, the text is written without it.
    OVERLAPPED place = byte_beyond_the_end(byte_of_appends);
    const bool locked =
        ::LockFileEx(handle_of(file_), LOCKFILE_EXCLUSIVE_LOCK, 0, 1, 0, &place) != 0;
    DWORD written = 0;
    ::WriteFile(handle_of(file_), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    if (locked) {
        ::UnlockFileEx(handle_of(file_), 0, 1, 0, &place);
    }
    return written;
}

std::uint64_t AppendFile::size() const noexcept {
    LARGE_INTEGER size = {};
    return ::GetFileSizeEx(handle_of(file_), &size) ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

bool AppendFile::is_named(const std::string& name) const {
    const Handle other(::CreateFileW(wide(name).c_str(), FILE_READ_ATTRIBUTES, share_all, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    BY_HANDLE_FILE_INFORMATION own = {};
    BY_HANDLE_FILE_INFORMATION named = {};
    const bool known = ::GetFileInformationByHandle(handle_of(file_), &own) &&
                       ::GetFileInformationByHandle(other.get(), &named);
    return known && own.dwVolumeSerialNumber == named.dwVolumeSerialNumber &&
           own.nFileIndexHigh == named.nFileIndexHigh && own.nFileIndexLow == named.nFileIndexLow;
}

bool AppendFile::try_lock() noexcept {
    OVERLAPPED place = byte_beyond_the_end(byte_of_try_lock);
    return ::LockFileEx(handle_of(file_), LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY, 0, 1,
                        0, &place) != 0;
}

} // namespace platform
