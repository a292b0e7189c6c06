#include "platform/removal.h"

#include <array>
#include <cstring>

#include "platform/seams.h"
#include "platform/win32/handle.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
#include <winioctl.h>

namespace platform {
namespace {

using Step = LinkRemoval::Step;

// The layout of Microsoft's REPARSE_GUID_DATA_BUFFER.
constexpr DWORD header_size = 24;
constexpr std::size_t guid_offset = 8;

void call_hook(const std::string& path) {
    if (seams().before_removal) {
        seams().before_removal(path);
    }
}

/// Turns the directory of the handle into an ordinary one.
LinkRemoval remove_reparse_point(HANDLE handle) {
    if (take_failure(Call::remove_link)) {
        return {Step::remove, seams().failure};
    }
    if (take_failure(Call::remove_linked_directory)) {
        return {Step::remove_directory, seams().failure};
    }
    std::array<unsigned char, MAXIMUM_REPARSE_DATA_BUFFER_SIZE> data{};
    DWORD returned = 0;
    if (!::DeviceIoControl(handle, FSCTL_GET_REPARSE_POINT, nullptr, 0, data.data(),
                           static_cast<DWORD>(data.size()), &returned, nullptr)) {
        return {Step::read, last_error()};
    }
    REPARSE_GUID_DATA_BUFFER request = {};
    request.ReparseTag = IO_REPARSE_TAG_MOUNT_POINT; // required, whatever the point really is
    std::memcpy(&request.ReparseGuid, data.data() + guid_offset, sizeof(request.ReparseGuid));
    return {Step::remove, error_of(::DeviceIoControl(handle, FSCTL_DELETE_REPARSE_POINT, &request,
                                                     header_size, nullptr, 0, &returned, nullptr))};
}

} // namespace

Result<RemovalAnchor> RemovalAnchor::open(const std::string& path, bool /*followLinks*/) const {
    call_hook(path);
    return RemovalAnchor();
}

SystemError RemovalAnchor::remove_file(const std::string& path) const {
    PLATFORM_SEAM(remove_file);
    call_hook(path);
    return error_of(::DeleteFileW(wide(path).c_str()));
}

SystemError RemovalAnchor::remove_directory(const std::string& path) const {
    call_hook(path);
    return error_of(::RemoveDirectoryW(wide(path).c_str()));
}

LinkRemoval RemovalAnchor::remove_link(const std::string& path) const {
    call_hook(path);
    const std::wstring name = wide(path);
    Handle link(::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                              FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT, nullptr));
    if (!link) {
        return {Step::open, last_error()};
    }
    const LinkRemoval removal = remove_reparse_point(link.get());
    link.close();
    if (removal.error) {
        return removal;
    }
    return {Step::remove_directory, error_of(::RemoveDirectoryW(name.c_str()))};
}

} // namespace platform
