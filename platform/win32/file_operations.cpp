#include "platform/file_operations.h"

#include <array>
#include <cwchar>
#include <sys/stat.h>

#include "platform/seams.h"
#include "platform/win32/handle.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
#define PSAPI_VERSION 2 // the functions of kernel32
#include <psapi.h>

namespace platform {
namespace {

constexpr std::int64_t tick = 100; // nanoseconds
constexpr std::int64_t epoch_in_ticks = 116'444'736'000'000'000;
constexpr std::int64_t largest_ticks = INT64_MAX; // the largest that FILETIME has as signed ticks

/// One byte of a file in memory.
class MappedByte {
  public:
    explicit MappedByte(HANDLE mapping) noexcept
        : view_(::MapViewOfFile(mapping, FILE_MAP_READ, 0, 0, 1)) {}
    MappedByte(const MappedByte&) = delete;
    MappedByte& operator=(const MappedByte&) = delete;
    ~MappedByte() {
        if (view_ != nullptr) {
            ::UnmapViewOfFile(view_);
        }
    }
    void* get() const noexcept { return view_; }

  private:
    void* view_;
};

FILETIME file_time(std::int64_t nanoseconds) {
    const auto ticks = static_cast<std::uint64_t>(
        nanoseconds == largest_time ? largest_ticks : nanoseconds / tick + epoch_in_ticks);
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

/// The path of a file with the system's name of its volume, such as
/// `\Device\HarddiskVolume1\dir\file`, from a view of the file. Required: empty if that fails, as
/// it does for an empty file.
std::wstring device_path(HANDLE file, std::size_t capacity) {
    DWORD high = 0;
    if (::GetFileSize(file, &high) == 0 && high == 0) {
        return {};
    }
    const Handle mapping(::CreateFileMappingW(file, nullptr, PAGE_READONLY, 0, 1, nullptr));
    if (mapping.get() == nullptr) {
        return {};
    }
    const MappedByte byte(mapping.get());
    std::wstring path(capacity + 1, L'\0');
    if (byte.get() == nullptr ||
        ::GetMappedFileNameW(::GetCurrentProcess(), byte.get(), path.data(),
                             static_cast<DWORD>(capacity)) == 0) {
        return {};
    }
    path.resize(std::wcslen(path.c_str()));
    return path;
}

/// The path with a drive letter; empty if its volume has none.
std::wstring with_drive_letter(const std::wstring& path) {
    std::array<wchar_t, 1024> drives{};
    if (::GetLogicalDriveStringsW(static_cast<DWORD>(drives.size() - 1), drives.data()) == 0) {
        return {};
    }
    for (const wchar_t* root = drives.data(); *root != L'\0'; root += std::wcslen(root) + 1) {
        const wchar_t drive[] = {*root, L':', L'\0'};
        std::array<wchar_t, MAX_PATH> device{};
        if (::QueryDosDeviceW(drive, device.data(), MAX_PATH) == 0) {
            continue;
        }
        const std::size_t length = std::wcslen(device.data());
        if (length < path.size() && path[length] == L'\\' &&
            ::_wcsnicmp(path.c_str(), device.data(), length) == 0) {
            return drive + path.substr(length);
        }
    }
    return {};
}

} // namespace

TimesChange set_file_times(const std::string& path, const std::int64_t* accessed,
                           const std::int64_t* modified) {
    Handle file(::CreateFileW(wide(path).c_str(), FILE_WRITE_ATTRIBUTES,
                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    if (file.get() == nullptr) {
        return {false, last_error()};
    }
    if (take_failure(Call::set_times)) {
        return {true, seams().failure};
    }
    const FILETIME access = file_time(accessed != nullptr ? *accessed : 0);
    const FILETIME change = file_time(modified != nullptr ? *modified : 0);
    if (!::SetFileTime(file.get(), nullptr, accessed != nullptr ? &access : nullptr,
                       modified != nullptr ? &change : nullptr)) {
        return {true, last_error()};
    }
    return {true, error_of(file.close())};
}

Result<std::uint64_t> file_size_by_name(const std::string& path) {
    struct _stat64 status = {};
    const SystemError error = runtime_error_of(::_wstat64(wide(path).c_str(), &status));
    return error ? Result<std::uint64_t>(error) : static_cast<std::uint64_t>(status.st_size);
}

Result<FileHandle> open_link_target(const std::string& path) {
    return open_handle(path, GENERIC_READ, FILE_SHARE_READ, OPEN_EXISTING);
}

FilePath path_of_file(FileHandle file, std::size_t capacity) {
    if (take_failure(Call::path_of_file)) {
        return {{}, capacity, seams().failure};
    }
    const std::wstring device = device_path(handle_of(file), capacity);
    const std::wstring on_drive = with_drive_letter(device);
    const std::wstring& path = on_drive.empty() ? device : on_drive;
    if (path.size() >= capacity) {
        // Required: only a path with a drive letter counts the closing zero.
        return {{},
                path.size() + (on_drive.empty() ? 0 : 1),
                SystemError::windows(ERROR_NOT_ENOUGH_MEMORY)};
    }
    return {narrow(path), path.size(), {}};
}

} // namespace platform
