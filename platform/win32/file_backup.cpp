#include "platform/file_backup.h"

#include <memory>

#include "platform/win32/handle.h"
#include "platform/win32/last_error.h"
#include "platform/win32/wide.h"
#include "platform/win32/windows.h"
// after windows.h
#include <sddl.h>

namespace platform {
namespace {

/// Inherits nothing from the directory: only the owner, the system and administrators.
constexpr const wchar_t* owner_only = L"D:P(A;;FA;;;OW)(A;;FA;;;SY)(A;;FA;;;BA)";
constexpr DWORD longest_path = 32768;

/// Gives `target` the access list of `source`.
SystemError copy_access(const std::wstring& source, const std::wstring& target) {
    DWORD size = 0;
    ::GetFileSecurityW(source.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    const auto descriptor = std::make_unique<std::byte[]>(size);
    if (!::GetFileSecurityW(source.c_str(), DACL_SECURITY_INFORMATION, descriptor.get(), size,
                            &size)) {
        return last_error();
    }
    return error_of(
        ::SetFileSecurityW(target.c_str(), DACL_SECURITY_INFORMATION, descriptor.get()));
}

SystemError flush(const std::wstring& path) {
    const Handle file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    return file ? error_of(::FlushFileBuffers(file.get())) : last_error();
}

/// Replaces the file by one that only its owner may open, and writes it through.
SystemError write_private(const std::wstring& path, std::string_view content) {
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(owner_only, SDDL_REVISION_1,
                                                                &descriptor, nullptr)) {
        return last_error();
    }
    SECURITY_ATTRIBUTES attributes = {sizeof attributes, descriptor, FALSE};
    const Handle file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, &attributes, CREATE_ALWAYS,
                                    FILE_FLAG_WRITE_THROUGH, nullptr));
    const SystemError error = file ? SystemError() : last_error();
    ::LocalFree(descriptor);
    return error ? error : write_all(reinterpret_cast<FileHandle>(file.get()), content);
}

/// Renames a complete file to its target, or removes it after an error.
SystemError finish(SystemError error, const std::string& made, const std::string& target) {
    error = error ? error : rename_over(made, target);
    if (error) {
        ::DeleteFileW(wide(made).c_str());
    }
    return error;
}

} // namespace

Result<std::string> real_path(const std::string& path) {
    const Handle file(::CreateFileW(wide(path).c_str(), 0,
                                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    const auto name = std::make_unique<wchar_t[]>(longest_path);
    const DWORD length =
        file ? ::GetFinalPathNameByHandleW(file.get(), name.get(), longest_path, 0) : 0;
    if (length == 0) {
        return last_error();
    }
    std::string real = narrow({name.get(), length});
    if (real.starts_with(R"(\\?\)") && real.find(':') == 5) { // the usual form of a drive's path
        real.erase(0, 4);
    }
    return real;
}

SystemError copy_whole(const std::string& source, const std::string& target) {
    const std::string made = target + ".new";
    SystemError error = error_of(::CopyFileW(wide(source).c_str(), wide(made).c_str(), FALSE));
    error = error ? error : copy_access(wide(source), wide(made));
    error = error ? error : flush(wide(made));
    return finish(error, made, target);
}

SystemError write_whole(const std::string& target, std::string_view content) {
    const std::string made = target + ".new";
    return finish(write_private(wide(made), content), made, target);
}

SystemError rename_over(const std::string& source, const std::string& target) {
    return error_of(::MoveFileExW(wide(source).c_str(), wide(target).c_str(),
                                  MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH));
}

} // namespace platform
